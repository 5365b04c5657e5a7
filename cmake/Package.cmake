# The Debian package of all that is installed. cpack builds it; script/package calls cpack.
set(VELK_PACKAGE_MAINTAINER "VELKPerfCtrl maintainers <maintainers@velkperfctrl.example>"
    CACHE STRING "Maintainer of the packages built here")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ${PROJECT_NAME})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "camera notifications for the CPU scheduling driver")
set(CPACK_PACKAGE_DESCRIPTION
    "A library by which a camera service tells the CPU scheduling driver what its\n\
threads do. With it comes what stands for a device on a desk (a model of the\n\
driver, tuning data, log and trace), and tools that replay recorded sessions,\n\
judge tuning data and judge a driver.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/package)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER ${VELK_PACKAGE_MAINTAINER})
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
    ${PROJECT_BINARY_DIR}/host ${PROJECT_BINARY_DIR}/src ${PROJECT_BINARY_DIR}/tools)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
file(WRITE ${PROJECT_BINARY_DIR}/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/triggers)

set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/PackageLayout.cmake)
set(CPACK_POST_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/PackageControl.cmake)
set(CPACK_VELK_SOURCE_DIR ${PROJECT_SOURCE_DIR})
set(CPACK_VELK_AOSP_LIBRARY_DIR ${VELK_AOSP_LIBRARY_DIR})
include(CPack)
