# Writes OUTPUT, a source file that defines the commit the tool is built from
# ("unknown" outside a git checkout), rewriting it only when the commit changed,
# so that a new commit rebuilds that one file.
execute_process(COMMAND git -C "${SOURCE_DIR}" rev-parse --short=7 HEAD
                OUTPUT_VARIABLE commit OUTPUT_STRIP_TRAILING_WHITESPACE
                RESULT_VARIABLE failed ERROR_QUIET)
if(failed OR commit STREQUAL "")
  set(commit unknown)
endif()
set(text "// Generated at build time by cmake/build_commit.cmake.\nnamespace ostrel::cli {\nconst char* buildCommit() {\n    return \"${commit}\";\n}\n}  // namespace ostrel::cli\n")
if(EXISTS "${OUTPUT}")
  file(READ "${OUTPUT}" previous)
endif()
if(NOT previous STREQUAL text)
  file(WRITE "${OUTPUT}" "${text}")
endif()
