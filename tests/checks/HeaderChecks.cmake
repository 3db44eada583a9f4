# nelvo_check_headers(<target> <root> <folder>): an object library with a source for each header in the folder
# that includes this header alone, twice. It builds if each header brings what it needs and bears repetition.
function(nelvo_check_headers target root folder)
    file(GLOB_RECURSE headers RELATIVE ${root} CONFIGURE_DEPENDS ${root}/${folder}/*.h)
    set(sources)
    foreach(header IN LISTS headers)
        set(source ${CMAKE_CURRENT_BINARY_DIR}/${target}/${header}.cpp)
        file(CONFIGURE OUTPUT ${source} CONTENT "#include \"${header}\"\n#include \"${header}\"\n")
        list(APPEND sources ${source})
    endforeach()
    add_library(${target} OBJECT ${sources})
    target_include_directories(${target} PRIVATE ${root})
    # Nothing of it is run. Without optimisation, fortified headers only warn.
    target_compile_options(${target} PRIVATE -O0 -g0 -U_FORTIFY_SOURCE)
endfunction()
