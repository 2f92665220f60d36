// SPDX-License-Identifier: Apache-2.0
#pragma once

/// Names of the command line's parser. Its header takes seconds to compile: only sources that use it include it.
namespace CLI {

class App;
class Option;
class Validator;

} // namespace CLI
