# The description of the public header (docs/description.md): records, exports,
# constants and status codes as JSON, written at build time by
# tools/describe/kvn_describe.py from what libclang makes of include/kvnsdk2.h.
# The tests, kvnctl, the fuzzers and the docs check read it, never the header's text;
# it is installed as share/kvnsdk2/kvnsdk2.json for bindings in any language.
#
# KVN_DESCRIPTION: the JSON file. kvn_generate(KIND OUTPUT) adds a rule that writes
# one fragment from it (tools/describe/kvn_generate.py lists the kinds).

# Debian's libclang bindings belong to Debian's interpreter; prefer it to whatever
# python3 comes first on PATH.
find_program(KVN_PYTHON NAMES python3 PATHS /usr/bin NO_DEFAULT_PATH)
if(NOT KVN_PYTHON)
  find_program(KVN_PYTHON NAMES python3 REQUIRED)
endif()
execute_process(COMMAND ${KVN_PYTHON} -c "import clang.cindex" RESULT_VARIABLE kvn_no_clang OUTPUT_QUIET ERROR_QUIET)
if(kvn_no_clang)
  message(FATAL_ERROR "${KVN_PYTHON} cannot import the libclang bindings, which read the public header "
                      "into its description (Debian: apt-get install python3-clang-14)")
endif()

set(KVN_DESCRIBE ${PROJECT_SOURCE_DIR}/tools/describe/kvn_describe.py)
set(KVN_GENERATE ${PROJECT_SOURCE_DIR}/tools/describe/kvn_generate.py)
set(KVN_DESCRIPTION ${PROJECT_BINARY_DIR}/share/kvnsdk2/kvnsdk2.json)
add_custom_command(OUTPUT ${KVN_DESCRIPTION}
  COMMAND ${CMAKE_COMMAND} -E make_directory ${PROJECT_BINARY_DIR}/share/kvnsdk2
  COMMAND ${KVN_PYTHON} ${KVN_DESCRIBE} ${PROJECT_SOURCE_DIR}/include/kvnsdk2.h ${KVN_DESCRIPTION}
          --version ${PROJECT_VERSION}
  DEPENDS ${PROJECT_SOURCE_DIR}/include/kvnsdk2.h ${KVN_DESCRIBE}
  COMMENT "Describing include/kvnsdk2.h"
  VERBATIM)
add_custom_target(kvnsdk2_description ALL DEPENDS ${KVN_DESCRIPTION})
install(FILES ${KVN_DESCRIPTION} DESTINATION ${CMAKE_INSTALL_DATADIR}/kvnsdk2)

function(kvn_generate kind output)
  add_custom_command(OUTPUT ${output}
    COMMAND ${KVN_PYTHON} ${KVN_GENERATE} ${kind} ${KVN_DESCRIPTION} ${output}
    DEPENDS ${KVN_DESCRIPTION} kvnsdk2_description ${KVN_GENERATE}
    COMMENT "Generating ${kind} from the description"
    VERBATIM)
endfunction()

# The export names, one per line, for the checks written in CMake and shell (the
# shared library's and the DLL's symbols, the API reference).
set(KVN_EXPORT_NAMES ${PROJECT_BINARY_DIR}/kvnsdk2_exports.txt)
kvn_generate(export-names ${KVN_EXPORT_NAMES})
add_custom_target(kvn_export_names ALL DEPENDS ${KVN_EXPORT_NAMES})
