# Debian packages of the components tool and dev; script/package makes them. packaging/debian has what only they need,
# and finish.cmake there does what Debian asks of files.

set(CPACK_GENERATOR DEB)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL tool dev)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_DEBIAN_PACKAGE_SOURCE nelvo)
set(CPACK_DEBIAN_PACKAGE_RELEASE 0nelvo1)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "Nelvo developers <nelvo@nelvo.invalid>")

set(CPACK_DEBIAN_TOOL_PACKAGE_NAME nelvoagentid)
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION admin)
set(CPACK_DEBIAN_TOOL_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_TOOL_PACKAGE_RECOMMENDS dmidecode)
set(CPACK_DEBIAN_TOOL_DESCRIPTION "tell the agent id of this machine
Prints one GUID that stays the same across runs: the one that is kept in
/etc/nelvoagentid, that of the firmware, or a new one, which is kept. What a
run does is told in a log.")

set(CPACK_DEBIAN_DEV_PACKAGE_NAME libnelvo-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS
    "libboost-filesystem1.74-dev, libboost-thread1.74-dev, uuid-dev, zlib1g-dev")
set(CPACK_DEBIAN_DEV_DESCRIPTION "C++ library for system software (development files)
Exceptions with context, buffers and streams of stored values, GUIDs, log
channels with progress scopes and rotation, files and what they have, key
sets that are wiped, threads and stop events.
.
The package has the static library, its headers, a CMake package with the
target nelvo::common, a file for pkg-config, and examples.")

# The date of the last commit, as script/package sets it: the same in each build of one state of the sources.
string(TIMESTAMP NELVO_PACKAGE_DATE "%a, %d %b %Y %H:%M:%S +0000" UTC)
string(TIMESTAMP NELVO_PACKAGE_YEAR %Y UTC)
set(debian_dir ${PROJECT_BINARY_DIR}/debian)
configure_file(${PROJECT_SOURCE_DIR}/packaging/debian/changelog.in ${debian_dir}/changelog.Debian @ONLY)
configure_file(${PROJECT_SOURCE_DIR}/packaging/debian/copyright.in ${debian_dir}/copyright @ONLY)
configure_file(${PROJECT_SOURCE_DIR}/packaging/debian/finish.cmake.in ${debian_dir}/finish.cmake @ONLY)
set(CPACK_PRE_BUILD_SCRIPTS ${debian_dir}/finish.cmake)

include(CPack)
