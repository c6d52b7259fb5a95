# Warnings on and clean for everything the project compiles itself.
add_library(ostrel_warnings INTERFACE)
target_compile_options(ostrel_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion
  -Wnon-virtual-dtor -Wold-style-cast -Woverloaded-virtual -Werror)
