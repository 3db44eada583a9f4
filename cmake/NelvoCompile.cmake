# How every target of this project is compiled: language, warnings, hardening, sanitizers.

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)

if(NOT CMAKE_BUILD_TYPE)
    set(CMAKE_BUILD_TYPE Release)
endif()
set(CMAKE_CXX_FLAGS_SANITIZE "-O1 -g1 -fno-omit-frame-pointer")

# Clang leaves out a warning that the tests' typed suites give cause for, and frees memory with its size, as GCC does.
add_library(nelvo_compile INTERFACE)
target_include_directories(nelvo_compile INTERFACE $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>)
target_compile_options(nelvo_compile INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wcast-qual -Wcast-align
    -Wformat=2 -Wnon-virtual-dtor -Woverloaded-virtual -Wold-style-cast -Wnull-dereference
    "$<$<CXX_COMPILER_ID:GNU>:-Wduplicated-cond;-Wlogical-op;-Wuseless-cast>" -Wredundant-decls -Wundef -Wvla
    "$<$<CXX_COMPILER_ID:Clang>:-Wno-gnu-zero-variadic-macro-arguments;-fsized-deallocation>"
    -fno-semantic-interposition)
target_compile_definitions(nelvo_compile INTERFACE
    BOOST_ALL_NO_LIB $<$<NOT:$<CONFIG:Release>>:_GLIBCXX_ASSERTIONS>)

# Full RELRO, stack protector, fortify. A sanitizer replaces what the last two check.
if(NELVO_SANITIZE)
    string(REPLACE ";" "," sanitizers "${NELVO_SANITIZE}")
    target_compile_options(nelvo_compile INTERFACE -fsanitize=${sanitizers} -fno-sanitize-recover=all)
    target_link_options(nelvo_compile INTERFACE -fsanitize=${sanitizers})
else()
    target_compile_options(nelvo_compile INTERFACE
        -fstack-protector-strong -fstack-clash-protection -fcf-protection)
    target_compile_definitions(nelvo_compile INTERFACE $<$<CONFIG:Release>:_FORTIFY_SOURCE=2>)
endif()
# The engine sees which way an input goes.
if(NELVO_FUZZ)
    target_compile_options(nelvo_compile INTERFACE -fsanitize=fuzzer-no-link)
endif()
# Counts stand in a mapped file at once, one for each program: they are there whichever way a process ends.
if(NELVO_COVERAGE)
    target_compile_options(nelvo_compile INTERFACE -fprofile-instr-generate=${CMAKE_BINARY_DIR}/counts/%m%c.profraw
        -fcoverage-mapping -fprofile-update=atomic "SHELL:-mllvm -runtime-counter-relocation")
    target_link_options(nelvo_compile INTERFACE -fprofile-instr-generate)
endif()
target_link_options(nelvo_compile INTERFACE -Wl,-z,relro,-z,now,-z,noexecstack)

# Leaves a third of the tool out of the file. There is no link-time optimisation: tool_bench shows less than one
# per cent of a run's time for it.
target_compile_options(nelvo_compile INTERFACE $<$<CONFIG:Release>:-ffunction-sections -fdata-sections>)
target_link_options(nelvo_compile INTERFACE $<$<CONFIG:Release>:-Wl,--gc-sections>)

add_library(nelvo_static_runtime INTERFACE)
if(NELVO_STATIC_RUNTIME)
    target_link_options(nelvo_static_runtime INTERFACE -static-libstdc++ -static-libgcc)
endif()

# Wholly static, and position independent all the same: at a fixed address the number of the main thread, which stands
# in the head of each log line, would fit 32 bits, and what cuts such numbers to 32 bits would find threads that it
# finds in no other build. As an item of the link line it stands behind CMake's own -pie, which it overrules. Packed
# relocations, which start up quicker, need no C library of a certain version where it is linked in. The linker warns of
# functions that would load shared libraries all the same, and such a warning is an error.
add_library(nelvo_static INTERFACE)
target_link_libraries(nelvo_static INTERFACE -static-pie)
target_link_options(nelvo_static INTERFACE -Wl,-z,pack-relative-relocs,--fatal-warnings)
