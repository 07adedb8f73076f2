# Turns strings.tsv into a C++ source holding the file's bytes, so that the
# table needs no file at run time. The text goes in as a byte array: the data
# may contain any character sequence, and raw-literal delimiters could clash.
file(READ "${IN}" hex HEX)
string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${hex}")
string(REGEX REPLACE "(0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,)" "\\1\n" bytes "${bytes}")
file(WRITE "${OUT}.tmp"
"// Generated from strings.tsv; do not edit.\n#include <cstddef>\n\nnamespace kestrel::detail {\nextern const unsigned char kStringTableData[] = {\n${bytes}0x00};\nextern const std::size_t kStringTableSize = sizeof(kStringTableData) - 1;\n}\n")
file(COPY_FILE "${OUT}.tmp" "${OUT}" ONLY_IF_DIFFERENT)
file(REMOVE "${OUT}.tmp")
