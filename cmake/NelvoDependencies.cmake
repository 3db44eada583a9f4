# What the library stands on. Boost 1.81 is packaged beside 1.74 and words some failures differently, so
# the version is exact. All of it is linked statically: the tool shall need the C library only. A shared library
# takes shared ones, because Debian's archives are not position independent.

if(BUILD_SHARED_LIBS)
    set(NELVO_USE_STATIC_LIBS OFF)
else()
    set(NELVO_USE_STATIC_LIBS ON)
endif()

set(Boost_USE_STATIC_LIBS ${NELVO_USE_STATIC_LIBS})
find_package(Boost 1.74.0 EXACT CONFIG REQUIRED COMPONENTS program_options filesystem thread)

set(ZLIB_USE_STATIC_LIBS ${NELVO_USE_STATIC_LIBS})
find_package(ZLIB REQUIRED)

set(libuuid_USE_STATIC_LIBS ${NELVO_USE_STATIC_LIBS})
find_package(libuuid MODULE REQUIRED)
