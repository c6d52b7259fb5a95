# Shared by both mingw toolchain files. The posix thread model gives the
# standard library its threads and mutexes; everything is linked statically
# so that the artefacts run under Wine with no runtime DLLs beside them.
set(CMAKE_C_COMPILER ${OSTREL_TRIPLE}-gcc-posix)
set(CMAKE_CXX_COMPILER ${OSTREL_TRIPLE}-g++-posix)
set(CMAKE_RC_COMPILER ${OSTREL_TRIPLE}-windres)
set(CMAKE_FIND_ROOT_PATH /usr/${OSTREL_TRIPLE})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static")
# ctest runs the test executables through the loader of their bitness: once
# wine32 is installed, `wine` is the 32-bit one.
if(CMAKE_SYSTEM_PROCESSOR STREQUAL x86_64 AND EXISTS /usr/lib/wine/wine64)
  set(CMAKE_CROSSCOMPILING_EMULATOR /usr/lib/wine/wine64)
else()
  set(CMAKE_CROSSCOMPILING_EMULATOR wine)
endif()
