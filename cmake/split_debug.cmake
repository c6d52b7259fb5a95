# cmake -DOBJCOPY=... -DINPUT=<built file> -DOUTPUT=<stripped file> -P split_debug.cmake
# Writes OUTPUT stripped, with a debug link to OUTPUT.debug, which holds the
# debug information. An ELF file with a build ID gets a copy of the debug
# file under .build-id/xx/rest.debug beside it as well, where gdb looks
# whatever the install prefix.
get_filename_component(dir ${OUTPUT} DIRECTORY)
get_filename_component(name ${OUTPUT} NAME)
function(run)
  execute_process(COMMAND ${ARGN} WORKING_DIRECTORY ${dir} COMMAND_ERROR_IS_FATAL ANY)
endfunction()
run(${OBJCOPY} --only-keep-debug ${INPUT} ${name}.debug)
run(${OBJCOPY} --strip-debug --strip-unneeded --add-gnu-debuglink=${name}.debug ${INPUT} ${name})
execute_process(COMMAND readelf -n ${OUTPUT} OUTPUT_VARIABLE notes ERROR_QUIET RESULT_VARIABLE status)
if(status EQUAL 0 AND notes MATCHES "Build ID: ([0-9a-f][0-9a-f])([0-9a-f]+)")
  file(REMOVE_RECURSE ${dir}/.build-id)
  file(MAKE_DIRECTORY ${dir}/.build-id/${CMAKE_MATCH_1})
  file(COPY_FILE ${dir}/${name}.debug ${dir}/.build-id/${CMAKE_MATCH_1}/${CMAKE_MATCH_2}.debug)
endif()
