// SPDX-License-Identifier: Apache-2.0

#include <Python.h>

/// The interpreter as a program that has a sanitizer's runtime from its start, as its libraries need.
int main(int argumentCount, char* arguments[]) {
    return Py_BytesMain(argumentCount, arguments);
}
