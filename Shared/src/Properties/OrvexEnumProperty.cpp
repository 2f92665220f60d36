// SPDX-License-Identifier: Apache-2.0

#include "Properties/OrvexEnumProperty.h"

namespace OrvexAdapter {

bool OrvexEnumProperty::isDiscrete() {
    return true;
}

} // namespace OrvexAdapter
