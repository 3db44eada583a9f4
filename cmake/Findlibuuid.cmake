# The target libuuid::libuuid: util-linux's library, which comes without a CMake package of its own. It is the archive
# if libuuid_USE_STATIC_LIBS is on.

find_path(libuuid_INCLUDE_DIR uuid/uuid.h)
if(libuuid_USE_STATIC_LIBS)
    find_library(libuuid_LIBRARY libuuid.a)
else()
    find_library(libuuid_LIBRARY uuid)
endif()
mark_as_advanced(libuuid_INCLUDE_DIR libuuid_LIBRARY)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(libuuid REQUIRED_VARS libuuid_LIBRARY libuuid_INCLUDE_DIR)

if(libuuid_FOUND AND NOT TARGET libuuid::libuuid)
    add_library(libuuid::libuuid UNKNOWN IMPORTED)
    set_target_properties(libuuid::libuuid PROPERTIES
        IMPORTED_LOCATION ${libuuid_LIBRARY} INTERFACE_INCLUDE_DIRECTORIES ${libuuid_INCLUDE_DIR})
endif()
