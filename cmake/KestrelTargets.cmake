# Shared warning flags, applied per target (no global flag edits).
function(kestrel_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wno-missing-field-initializers)
endfunction()

# kestrel_library(NAME SOURCES ... [DEPS ...] [QT]) — a static library of one subsystem.
function(kestrel_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPS" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(${name} PUBLIC ${ARG_DEPS})
  kestrel_warnings(${name})
endfunction()

# kestrel_program(TARGET) — a program users run: every program lands in bin/ of the
# build folder, so one finds the others beside itself (the alert program).
function(kestrel_program target)
  set_target_properties(${target} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
  kestrel_warnings(${target})
endfunction()

# kestrel_test(NAME SOURCES ... [DEPS ...] [ENV ...] [LABELS ...])
function(kestrel_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPS;ENV;LABELS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_DEPS} GTest::gtest GTest::gtest_main GTest::gmock)
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  kestrel_warnings(${name})
  add_test(NAME ${name} COMMAND ${name})
  set_tests_properties(${name} PROPERTIES TIMEOUT 300)
  if(ARG_ENV)
    set_tests_properties(${name} PROPERTIES ENVIRONMENT "${ARG_ENV}")
  endif()
  if(ARG_LABELS)
    set_tests_properties(${name} PROPERTIES LABELS "${ARG_LABELS}")
  endif()
endfunction()

# kestrel_embed_file(OUT_VAR INPUT SYMBOL) — compiles a data file into the program:
# generates a source that defines kestrel::detail::SYMBOL[] (the bytes, NUL-terminated)
# and SYMBOLSize, and stores the generated source's path in OUT_VAR.
function(kestrel_embed_file out_var input symbol)
  get_filename_component(name ${input} NAME)
  set(out ${CMAKE_CURRENT_BINARY_DIR}/${symbol}_data.cpp)
  add_custom_command(
    OUTPUT ${out}
    COMMAND ${CMAKE_COMMAND} -DIN=${input} -DOUT=${out} -DVAR=${symbol} -DNAME=${name}
            -P ${PROJECT_SOURCE_DIR}/cmake/EmbedFile.cmake
    DEPENDS ${input} ${PROJECT_SOURCE_DIR}/cmake/EmbedFile.cmake
    COMMENT "Embedding ${name}")
  set(${out_var} ${out} PARENT_SCOPE)
endfunction()
