#pragma once

#include <map>
#include <memory>
#include <string>

#include "Functions/Function.h"

namespace OrvexAdapter {

class OrvexCamera;

/// Adds the maintenance functions of an SDK camera to its table. One that refuses construction is left out.
void buildOrvexFunctions(std::map<std::string, std::unique_ptr<CameraInterface::Function>>& functions,
                         OrvexCamera* camera);

} // namespace OrvexAdapter
