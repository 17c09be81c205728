# What `cmake --install` lays out: the libraries with their headers, the plug-in, the package files that let
# find_package(VeltoTouch) find them, and the program.
include(CMakePackageConfigHelpers)

# Two components: what users have, and what developers have beside it.
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME runtime)

set(VELTO_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/VeltoTouch)

set_target_properties(velto PROPERTIES INSTALL_RPATH "$ORIGIN/${VELTO_BIN_TO_PRIVATE}")

install(TARGETS velto RUNTIME)
# The public headers keep their folders: #include "Platform/Value.h" reads the same outside as it does here.
set(VELTO_HEADERS FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/VeltoTouch COMPONENT development)
install(TARGETS VeltoPlatform EXPORT VeltoTouchTargets
        LIBRARY DESTINATION ${VELTO_PRIVATE_DIR} NAMELINK_COMPONENT development
        ${VELTO_HEADERS})
install(TARGETS VeltoTouchCore VeltoTouchHost EXPORT VeltoTouchTargets ARCHIVE COMPONENT development ${VELTO_HEADERS})
install(TARGETS VeltoArithmetic EXPORT VeltoTouchTargets)

# The plug-in is a folder: the module and its manifest.
set(VELTO_PLUGIN_DIR ${VELTO_PRIVATE_DIR}/VeltoTouchHIDService.plugin)
set_target_properties(VeltoTouchHIDService PROPERTIES INSTALL_RPATH "$ORIGIN/..")
install(TARGETS VeltoTouchHIDService LIBRARY DESTINATION ${VELTO_PLUGIN_DIR})
install(FILES Plugin/Service/Info.json DESTINATION ${VELTO_PLUGIN_DIR})

install(EXPORT VeltoTouchTargets NAMESPACE VeltoTouch:: DESTINATION ${VELTO_PACKAGE_DIR} COMPONENT development)
configure_package_config_file(cmake/VeltoTouchConfig.cmake.in ${PROJECT_BINARY_DIR}/VeltoTouchConfig.cmake
                              INSTALL_DESTINATION ${VELTO_PACKAGE_DIR} PATH_VARS VELTO_PLUGIN_DIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/VeltoTouchConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/VeltoTouchConfig.cmake ${PROJECT_BINARY_DIR}/VeltoTouchConfigVersion.cmake
        DESTINATION ${VELTO_PACKAGE_DIR} COMPONENT development)

if(TARGET velto_docs) # not with the thread sanitizer
    include(${CMAKE_CURRENT_LIST_DIR}/Docs.cmake)
endif()
