# SPDX-License-Identifier: Apache-2.0

# Run as a script: writes a source file with the bytes of the page's files and of the interface's description.
# cmake -D OUTPUT=FILE -D SITE=FOLDER -D DESCRIPTION=FILE -P QuillEmbedPage.cmake

cmake_minimum_required(VERSION 3.25)

set(media_type_.css "text/css; charset=utf-8")
set(media_type_.html "text/html; charset=utf-8")
set(media_type_.js "text/javascript; charset=utf-8")
set(media_type_.json "application/json")
set(media_type_.svg "image/svg+xml")

# Sets RESULT to the initialiser of a file's PageFile.
function(describe_file file result)
    get_filename_component(name "${file}" NAME)
    get_filename_component(extension "${file}" LAST_EXT)
    if(NOT DEFINED "media_type_${extension}")
        message(FATAL_ERROR "${file}: a page has no files of this type")
    endif()
    file(SHA256 "${file}" digest)
    string(SUBSTRING "${digest}" 0 16 digest)
    file(SIZE "${file}" size)
    file(READ "${file}" bytes HEX)
    string(REGEX REPLACE "([0-9a-f][0-9a-f])" "\\\\x\\1" bytes "${bytes}")
    string(REPEAT "\\\\x[0-9a-f][0-9a-f]" 24 line)
    string(REGEX REPLACE "(${line})" "\\1\"\n        \"" bytes "${bytes}")
    set(${result} "    {\"${name}\", \"${media_type_${extension}}\", \"\\\"${digest}\\\"\",\n     {\"${bytes}\", ${size}}},\n" PARENT_SCOPE)
endfunction()

file(GLOB files "${SITE}/*.*")
set(entries "")
foreach(file ${files})
    describe_file("${file}" entry)
    string(APPEND entries "${entry}")
endforeach()
describe_file("${DESCRIPTION}" description)
string(REGEX REPLACE ",\n$" "" description "${description}")

file(WRITE "${OUTPUT}" "// Made from the page's files when they change.

#include \"Serve/Page/PageFiles.h\"

namespace QuillTool::Serve {

const std::vector<PageFile>& pageFiles() {
    static const std::vector<PageFile> files{
${entries}    };
    return files;
}

const PageFile& interfaceDescription() {
    static const PageFile description =
${description};
    return description;
}

} // namespace QuillTool::Serve
")
