# Compiler settings for every target of the project.

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()

# Loops are vectorised in every optimised build type.
set(CMAKE_CXX_FLAGS_RELEASE "-O3 -DNDEBUG")
set(CMAKE_CXX_FLAGS_RELWITHDEBINFO "-O3 -g")

# No contraction: scalar and vector forms of a kernel must round alike on every machine.
# No-math-errno and no-trapping-math change no value; they let the compiler vectorise square
# roots and selections.
add_compile_options(-ffp-contract=off -fno-math-errno -fno-trapping-math)

add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-psabi)
if(VISTATRIM_WARNINGS_AS_ERRORS)
    add_compile_options(-Werror)
endif()

if(VISTATRIM_SANITIZE)
    add_compile_options(-fsanitize=${VISTATRIM_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${VISTATRIM_SANITIZE})
    # Instrumented loops may not vectorise, and clang warns where a pragma asks for it.
    add_compile_options($<$<CXX_COMPILER_ID:Clang>:-Wno-pass-failed>)
endif()
if(VISTATRIM_COVERAGE)
    # Only src/, photo/ and cli/ are instrumented, but every target that links their objects needs the
    # coverage runtime.
    add_link_options(--coverage)
endif()
