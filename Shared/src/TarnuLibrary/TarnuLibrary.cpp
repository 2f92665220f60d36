// SPDX-License-Identifier: Apache-2.0

#include "TarnuLibrary/TarnuLibrary.h"

#include "Base/OperationBinding.h"
#include "Base/SharedLibrary.h"
#include "Base/TableInUse.h"

namespace Usb3VisionAdapter {

namespace {

static_assert(sizeof(TarnuLibrary) == 7 * sizeof(void (*)()));

TarnuLibrary bindBesideThisLibrary() {
    return TarnuLibrary::bindTo(Base::getLibraryFolder());
}

Base::TableInUse<TarnuLibrary, bindBesideThisLibrary> tableInUse;

} // namespace

TarnuLibrary::TarnuLibrary() {
#define QUILL_UNBIND_OPERATION(name, result, parameters) Base::unbind<0>(name);
    TARNU_OPERATIONS(QUILL_UNBIND_OPERATION)
#undef QUILL_UNBIND_OPERATION
}

TarnuLibrary TarnuLibrary::bindTo(const std::string& folder) {
    TarnuLibrary table;
    const Base::SharedLibrary library(folder, "tarnulibrary");
#define QUILL_BIND_OPERATION(name, result, parameters) Base::bind(table.name, library.find(#name));
    TARNU_OPERATIONS(QUILL_BIND_OPERATION)
#undef QUILL_BIND_OPERATION
    return table;
}

const TarnuLibrary& tarnuLibrary() {
    return tableInUse.get();
}

void useTarnuLibrary(const TarnuLibrary* library) {
    tableInUse.replace(library);
}

} // namespace Usb3VisionAdapter
