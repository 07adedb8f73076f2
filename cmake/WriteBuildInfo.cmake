# Writes the build's version and date into OUT (a C++ source), only when they
# changed, so an unchanged tree does not rebuild. Called at every build with
# -DSRC=<source tree> -DOUT=<file> -DFALLBACK=<project version>.
execute_process(COMMAND git -C ${SRC} describe --tags --always --dirty
                OUTPUT_VARIABLE version OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET RESULT_VARIABLE rc)
if(NOT rc EQUAL 0 OR version STREQUAL "")
  set(version ${FALLBACK})
endif()
string(TIMESTAMP date "%Y-%m-%d" UTC)
set(text "// Generated at build time.\nnamespace kestrel::detail {\nextern const char *const kBuildVersion = \"${version}\";\nextern const char *const kBuildDate = \"${date}\";\n}\n")
if(EXISTS ${OUT})
  file(READ ${OUT} old)
else()
  set(old "")
endif()
if(NOT old STREQUAL text)
  file(WRITE ${OUT} "${text}")
endif()
