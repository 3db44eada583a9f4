# What the library stands on. Boost 1.81 is packaged beside 1.74 and words some failures differently, so
# the version is exact. All of it is linked statically: the tool shall need the C library only.

set(Boost_USE_STATIC_LIBS ON)
find_package(Boost 1.74.0 EXACT CONFIG REQUIRED COMPONENTS program_options filesystem thread date_time)

set(ZLIB_USE_STATIC_LIBS ON)
find_package(ZLIB REQUIRED)

find_path(UUID_INCLUDE_DIR uuid/uuid.h REQUIRED)
find_library(UUID_LIBRARY libuuid.a REQUIRED)
add_library(nelvo_uuid INTERFACE)
target_include_directories(nelvo_uuid SYSTEM INTERFACE ${UUID_INCLUDE_DIR})
target_link_libraries(nelvo_uuid INTERFACE ${UUID_LIBRARY})
