# What `cmake --install` lays out: the libraries with their headers, the plug-in, the package files that let
# find_package(VeltoTouch) find them, and the program.
include(CMakePackageConfigHelpers)

set(VELTO_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/VeltoTouch)

# The program finds the shared library beside it, wherever the two are moved together.
file(RELATIVE_PATH VELTO_BIN_TO_LIB ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
set_target_properties(velto PROPERTIES INSTALL_RPATH "$ORIGIN/${VELTO_BIN_TO_LIB}")

install(TARGETS velto RUNTIME)
install(TARGETS VeltoPlatform VeltoTouchCore VeltoTouchHost EXPORT VeltoTouchTargets)

# The plug-in is a folder: the module and its manifest.
set(VELTO_PLUGIN_DIR ${CMAKE_INSTALL_LIBDIR}/VeltoTouch/VeltoTouchHIDService.plugin)
set_target_properties(VeltoTouchHIDService PROPERTIES INSTALL_RPATH "$ORIGIN/../..")
install(TARGETS VeltoTouchHIDService LIBRARY DESTINATION ${VELTO_PLUGIN_DIR})
install(FILES Service/Info.json DESTINATION ${VELTO_PLUGIN_DIR})

# The headers keep their folders: #include "Platform/Value.h" reads the same outside as it does here.
install(DIRECTORY Platform Pipeline Shared Algs Recording Host DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/VeltoTouch
        FILES_MATCHING PATTERN "*.h")

install(EXPORT VeltoTouchTargets NAMESPACE VeltoTouch:: DESTINATION ${VELTO_PACKAGE_DIR})
configure_package_config_file(cmake/VeltoTouchConfig.cmake.in ${PROJECT_BINARY_DIR}/VeltoTouchConfig.cmake
                              INSTALL_DESTINATION ${VELTO_PACKAGE_DIR} PATH_VARS VELTO_PLUGIN_DIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/VeltoTouchConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/VeltoTouchConfig.cmake ${PROJECT_BINARY_DIR}/VeltoTouchConfigVersion.cmake
        DESTINATION ${VELTO_PACKAGE_DIR})

include(${CMAKE_CURRENT_LIST_DIR}/Docs.cmake)
