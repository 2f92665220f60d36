# SPDX-License-Identifier: Apache-2.0
# Writes a C program that calls every function of the header with one bad argument after another. What is optional follows
# from the types, as the header says: errors, settings, options, callbacks, contexts, progress, data.
/^typedef struct quill_[a-z0-9_]+ \{/ { struct = $3 }
/^    size_t size;/ { sized[struct] = 1 }
/^QUILL_C_API / { text = "" }
/^QUILL_C_API /, /;/ {
    text = text " " $0
    if (!/;/) next
    gsub(/ +/, " ", text)
    if (text !~ /QUILL_C_API quill_status quill_/ || text ~ /quill_status_name/) next
    match(text, /quill_status quill_[a-z0-9_]+\(/)
    name = substr(text, RSTART + 13, RLENGTH - 14)
    list = text
    sub(/^[^(]*\(/, "", list); sub(/\);.*/, "", list)
    ++functions
    count = split(list, parameter, /, */)
    declarations = ""
    for (i = 1; i <= count; ++i) {
        type = parameter[i]; sub(/ ?[a-z0-9_]+$/, "", type)
        label = parameter[i]; sub(/.* /, "", label)
        kind[i] = ""
        good[i] = "0"
        if (type ~ /^quill_(camera|frame_queue|frame|image)$/) {
            kind[i] = "handle"; good[i] = "(" type "){0}"; handles[i] = type
        } else if (type ~ /_function$/ || label == "error" || label == "context" ||
                   type == "const void*" || type ~ /^const quill_(frame_queue_settings|settings_options|bytes)\*$/) {
            good[i] = label == "error" ? "&failure" : "NULL"
        } else if (type == "const char*") {
            kind[i] = "required"; good[i] = "\"Width\""
        } else if (type ~ /\*$/) {
            kind[i] = "required"
            pointed = type; sub(/^const /, "", pointed); sub(/\*$/, "", pointed)
            declarations = declarations "    " pointed " a" i "[8]; memset(a" i ", 0, sizeof a" i ");\n"
            if (pointed in sized) declarations = declarations "    a" i "[0].size = sizeof a" i "[0];\n"
            good[i] = "a" i
        }
    }
    printf "static void sweep_%s(void) {\n%s", name, declarations
    for (bad = 1; bad <= count; ++bad) {
        if (kind[bad] == "") continue
        ++calls
        values = kind[bad] == "handle" ? 4 : 1
        for (value = 0; value < values; ++value) {
            wanted = kind[bad] == "handle" ? "QUILL_INVALID_HANDLE" : "QUILL_NULL_ARGUMENT"
            printf("    expect(\"%s\", %d, %s, %s(", name, bad, wanted, name)
            for (i = 1; i <= count; ++i) {
                argument = good[i]
                if (i == bad) argument = kind[bad] == "handle" ? "(" handles[i] "){bad_ids[" value "]}" : "NULL"
                printf("%s%s", (i > 1 ? ", " : ""), argument)
            }
            print "));"
        }
    }
    print "}\n"
    all = all "    sweep_" name "();\n"
}
BEGIN {
    print "#include <stdio.h>\n#include <string.h>\n\n#include <quillcamera.h>\n"
    print "static quill_error failure = QUILL_ERROR_INIT;\nstatic uint64_t bad_ids[4];\nstatic int failures;\n"
    print "static void expect(const char* function, int argument, quill_status wanted, quill_status got) {"
    print "    if (got != wanted || failure.status != wanted || failure.sentence[0] == 0) {"
    print "        ++failures;"
    print "        printf(\"%s, argument %d: %s instead of %s\\n\", function, argument, quill_status_name(got), quill_status_name(wanted));"
    print "    }\n    failure.status = QUILL_OK;\n    failure.sentence[0] = 0;\n}\n"
}
END {
    print "int main(void) {"
    print "    quill_image live, released;"
    print "    if (quill_create_image(1, 1, NULL, 0, 8, true, QUILL_MONO, &released, NULL) != QUILL_OK ||"
    print "        quill_image_release(released, NULL) != QUILL_OK ||"
    print "        quill_create_image(1, 1, NULL, 0, 8, true, QUILL_MONO, &live, NULL) != QUILL_OK) return 1;"
    print "    bad_ids[1] = released.id;"
    print "    bad_ids[2] = live.id ^ ((uint64_t)7 << 24); // of another kind"
    print "    bad_ids[3] = UINT64_MAX;"
    printf "%s", all
    printf "    printf(\"%d functions, %d arguments\\n\");\n    return failures != 0;\n}\n", functions, calls
}
