#include "Streams/Stream.h"

namespace CameraInterface {

Stream::~Stream() = default;

} // namespace CameraInterface
