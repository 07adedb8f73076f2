# Turns a text file into a C++ source that holds its bytes under the name VAR
# (with VAR_size), so that the program needs no data file at run time.
file(READ "${IN}" hex HEX)
string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${hex}")
string(REGEX REPLACE "(0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,)" "\\1\n" bytes "${bytes}")
file(WRITE "${OUT}.tmp"
"// Generated from ${NAME}; do not edit.\n#include <cstddef>\n\nnamespace kestrel::detail {\nextern const unsigned char ${VAR}[] = {\n${bytes}0x00};\nextern const std::size_t ${VAR}Size = sizeof(${VAR}) - 1;\n}\n")
file(COPY_FILE "${OUT}.tmp" "${OUT}" ONLY_IF_DIFFERENT)
file(REMOVE "${OUT}.tmp")
