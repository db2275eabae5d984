# Warnings are errors, everywhere.
add_library(tallyforge_warnings INTERFACE)
target_compile_options(tallyforge_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Werror -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual
  -Wold-style-cast -Wcast-qual -Wunused -Wformat=2 -Wimplicit-fallthrough -Wextra-semi)

# GCC 12 sees overlapping copies in plain string concatenation at -O3 where there are none.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  target_compile_options(tallyforge_warnings INTERFACE -Wno-restrict)
endif()

# Where files are compiled together, a local name may hide one of a neighbouring file's own.
target_compile_options(tallyforge_warnings INTERFACE $<$<BOOL:$<TARGET_PROPERTY:UNITY_BUILD>>:-Wno-shadow>)

# Which sanitizer watches, under one name for every compiler.
foreach(sanitizer IN ITEMS address thread)
  string(TOUPPER ${sanitizer} name)
  set(watched 0)
  if(CMAKE_CXX_FLAGS MATCHES "-fsanitize=[a-z,-]*${sanitizer}")
    set(watched 1)
  endif()
  target_compile_definitions(tallyforge_warnings INTERFACE ${name}_SANITIZER=${watched})
endforeach()
