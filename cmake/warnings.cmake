# Warnings on for every target of the project; clean with g++ 12 and clang 14.
add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wcast-align
                    -Woverloaded-virtual -Wformat=2 -Wimplicit-fallthrough)
option(KESH_WERROR "Treat warnings as errors" OFF)
if(KESH_WERROR)
  add_compile_options(-Werror)
endif()
