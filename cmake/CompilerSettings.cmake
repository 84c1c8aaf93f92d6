# The language and the warnings of every target of this project.
set(CMAKE_CXX_STANDARD 23)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_SCAN_FOR_MODULES OFF)

include(CheckCXXSourceCompiles)
set(CMAKE_REQUIRED_FLAGS ${CMAKE_CXX23_STANDARD_COMPILE_OPTION})
check_cxx_source_compiles("#include <expected>\nint main() { return std::expected<int, int>(0).value(); }"
                          QUORVANE_HAS_EXPECTED)
unset(CMAKE_REQUIRED_FLAGS)
if(NOT QUORVANE_HAS_EXPECTED)
    message(FATAL_ERROR "Quorvane needs std::expected: GCC 12, clang 19 with its libstdc++, or clang 17 with libc++; "
                        "found ${CMAKE_CXX_COMPILER_ID} ${CMAKE_CXX_COMPILER_VERSION} (${CMAKE_CXX_COMPILER})")
endif()

add_compile_options(
    -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual
    -Wold-style-cast -Wcast-align -Wcast-qual -Wextra-semi -Wdeprecated-copy-dtor -Wformat=2 -Wimplicit-fallthrough
    -Wundef -Wswitch-enum)

if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    add_compile_options(-Wduplicated-branches -Wduplicated-cond -Wlogical-op -Wsuggest-override)
    # GCC 12 reports what does not exist: overlapping copies inside std::string::operator+ (GCC bug 105651), and the unused
    # half of a std::expected as used uninitialised. clang, which other presets compile with, looks for the latter too.
    if(CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
        add_compile_options(-Wno-restrict -Wno-maybe-uninitialized)
    endif()
else()
    add_compile_options(-Wthread-safety -Wsuggest-override)
endif()

# A newer compiler warns of more than continuous integration has seen; that must not keep people from building.
if(NOT "${CMAKE_CXX_COMPILER_ID} ${CMAKE_CXX_COMPILER_VERSION}" MATCHES "^(GNU 12|Clang 19)\\.")
    set(CMAKE_COMPILE_WARNING_AS_ERROR OFF)
endif()

# Cheap checks of the standard library (an index past the end aborts) stay on in every build.
add_compile_definitions(_GLIBCXX_ASSERTIONS)
