# cmake -DOUTPUT=file.cpp -DINPUTS="a|b" -P embed_files.cmake
# Writes a C++ source holding the given files as byte arrays, looked up by
# file name through builtinLanguageFile (src/ui/builtin_language.h).
set(body "")
set(table "")
set(index 0)
string(REPLACE "|" ";" INPUTS "${INPUTS}")
foreach(input ${INPUTS})
  get_filename_component(name ${input} NAME)
  file(READ ${input} hex HEX)
  string(LENGTH "${hex}" hex_length)
  math(EXPR size "${hex_length} / 2")
  string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${hex}")
  string(REGEX REPLACE "(0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,)" "\\1\n" bytes "${bytes}")
  string(APPEND body "const unsigned char file${index}[] = {\n${bytes}0};\n")
  string(APPEND table "    {\"${name}\", file${index}, ${size}},\n")
  math(EXPR index "${index} + 1")
endforeach()
file(WRITE ${OUTPUT}.tmp "// Generated from the data files by cmake/embed_files.cmake.
#include \"ui/builtin_language.h\"

namespace ostrel {
namespace {
${body}
struct Entry {
    std::string_view name;
    const unsigned char* data;
    size_t size;
};
const Entry entries[] = {
${table}};
}  // namespace

std::optional<std::string_view> builtinLanguageFile(std::string_view name) {
    for (const Entry& entry : entries) {
        if (entry.name == name) {
            return std::string_view(reinterpret_cast<const char*>(entry.data), entry.size);
        }
    }
    return std::nullopt;
}

}  // namespace ostrel
")
file(COPY_FILE ${OUTPUT}.tmp ${OUTPUT} ONLY_IF_DIFFERENT)
