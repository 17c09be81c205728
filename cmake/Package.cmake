# `cpack -G DEB` in a build folder makes packages of what Install.cmake lays out: the program as part of a system, what
# a host of one's own is made with, and the Python module.

# What makes the program part of a system. Its files name the program by its path, so that only packages have them.
function(velto_install_system file destination)
    install(FILES Packaging/${file} DESTINATION ${destination} COMPONENT runtime EXCLUDE_FROM_ALL ${ARGN})
endfunction()
velto_install_system(velto-touch@.service lib/systemd/system)
velto_install_system(60-velto-touch.rules lib/udev/rules.d)
install(TARGETS velto-check-device RUNTIME DESTINATION lib/udev COMPONENT runtime EXCLUDE_FROM_ALL)
velto_install_system(sysusers.conf lib/sysusers.d RENAME velto-touch.conf)
velto_install_system(modules-load.conf lib/modules-load.d RENAME velto-touch.conf)
velto_install_system(org.velto.Touch1.conf share/dbus-1/system.d)
velto_install_system(config.toml ../etc/velto-touch) # beside /usr

# Documents of a package; cmake/CompressDocuments.cmake makes of them what Debian wants.
function(velto_install_package_documents component package)
    set(in DESTINATION share/doc/${package} COMPONENT ${component} EXCLUDE_FROM_ALL)
    install(FILES LICENSE ${in} RENAME copyright)
    install(FILES CHANGELOG.md ${in} RENAME changelog)
    install(FILES Packaging/Debian/changelog ${in} RENAME changelog.Debian)
    install(FILES Packaging/Debian/${package}.overrides DESTINATION share/lintian/overrides COMPONENT ${component}
            EXCLUDE_FROM_ALL RENAME ${package})
endfunction()
velto_install_package_documents(runtime velto-touch)
velto_install_package_documents(development velto-touch-dev)
if(VELTO_PYTHON)
    velto_install_package_documents(python python3-velto)
endif()

# The packages' release is that of the newest entry of their changelog, which must be one of this version.
file(STRINGS Packaging/Debian/changelog VELTO_PACKAGE_ENTRY LIMIT_COUNT 1)
if(NOT VELTO_PACKAGE_ENTRY MATCHES "^velto-touch \\(${PROJECT_VERSION}-([0-9]+)\\)")
    message(FATAL_ERROR "Packaging/Debian/changelog tells of no package of version ${PROJECT_VERSION}")
endif()
set(CPACK_DEBIAN_PACKAGE_RELEASE ${CMAKE_MATCH_1})

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME velto-touch)
set(CPACK_PACKAGE_CONTACT "VeltoTouch developers <developers@velto.example>")
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/Packages)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
                                                WORLD_READ WORLD_EXECUTE)
set(CPACK_COMPONENTS_ALL runtime development)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/CompressDocuments.cmake)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SOURCE velto-touch)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME velto-touch)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS "systemd (>= 252), udev (>= 252), kmod")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_RECOMMENDS "default-dbus-system-bus | dbus-system-bus")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/Packaging/Debian/postinst
                                               ${PROJECT_SOURCE_DIR}/Packaging/Debian/prerm
                                               ${PROJECT_SOURCE_DIR}/Packaging/Debian/postrm
                                               ${PROJECT_SOURCE_DIR}/Packaging/Debian/conffiles)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
"Taps and holds in the three regions of the surface become play-pause and volume
keys of this machine as soon as it is plugged in. The velto command shows the
surface live, records it and replays recordings.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME velto-touch-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
    "velto-touch (= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}), libfmt-dev (>= 9)")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
"Headers, libraries and CMake package files for programs that host the plug-in
of the touch surface, or that recognize gestures by themselves.")
if(VELTO_PYTHON)
    list(APPEND CPACK_COMPONENTS_ALL python)
    math(EXPR VELTO_NEXT_PYTHON "${Python_VERSION_MINOR} + 1")
    set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-velto)
    set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
    set(CPACK_DEBIAN_PYTHON_PACKAGE_SHLIBDEPS ON)
    set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/Platform) # the other package's
    set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "velto-touch (= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}), \
python3 (>= 3.${Python_VERSION_MINOR}), python3 (<< 3.${VELTO_NEXT_PYTHON}), python3-numpy")
    set(CPACK_DEBIAN_PYTHON_PACKAGE_SUGGESTS "python3-distributed, python3-matplotlib, python3-pandas")
    set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/Packaging/Debian/python/postinst
                                                  ${PROJECT_SOURCE_DIR}/Packaging/Debian/python/prerm)
    set(CPACK_COMPONENT_PYTHON_DESCRIPTION
"Recordings of the touch surface as numpy arrays, what recognition makes of
them, image by image, and how well: for notebooks, training, large corpora.")
endif()
include(CPack)
