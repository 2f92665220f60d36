#include "Properties/OrvexEnumProperty.h"

namespace OrvexAdapter {

bool OrvexEnumProperty::isDiscrete() {
    return true;
}

} // namespace OrvexAdapter
