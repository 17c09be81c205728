# Manual pages and completions, made from the program's own description at the end of each build, and where they go.
# The date of the pages is that of the packages' newest release, so that every build of it gives the same.
file(STRINGS Packaging/Debian/changelog VELTO_RELEASED REGEX "^ -- " LIMIT_COUNT 1)
string(REGEX REPLACE "^.*>  " "" VELTO_RELEASED "${VELTO_RELEASED}")
execute_process(COMMAND date --utc --date=${VELTO_RELEASED} +%F OUTPUT_VARIABLE VELTO_DATE
                OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
set(VELTO_DOCS_DIR ${PROJECT_BINARY_DIR}/docs)

target_compile_definitions(velto_docs PRIVATE VELTO_DATE="${VELTO_DATE}")
add_custom_command(OUTPUT ${VELTO_DOCS_DIR}/made
                   COMMAND velto_docs ${VELTO_DOCS_DIR}
                   COMMAND ${CMAKE_COMMAND} -E touch ${VELTO_DOCS_DIR}/made
                   DEPENDS velto_docs
                   COMMENT "Writing manual pages and completions"
                   VERBATIM)
add_custom_target(docs ALL DEPENDS ${VELTO_DOCS_DIR}/made)

# The bus interface's page is written by hand.
configure_file(Docs/org.velto.Touch1.5.in ${VELTO_DOCS_DIR}/man5/org.velto.Touch1.5 @ONLY)

install(DIRECTORY ${VELTO_DOCS_DIR}/man1 ${VELTO_DOCS_DIR}/man5 DESTINATION ${CMAKE_INSTALL_MANDIR})
install(FILES ${VELTO_DOCS_DIR}/completions/velto.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
        RENAME velto)
install(FILES ${VELTO_DOCS_DIR}/completions/_velto DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions)

# What the README links to.
file(GLOB VELTO_PAGES CONFIGURE_DEPENDS Docs/*.md)
install(FILES ${VELTO_PAGES} DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/velto-touch)

# Examples that need nothing but what is installed.
install(DIRECTORY Examples/trace DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/velto-touch/examples)
install(DIRECTORY Examples/host DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/velto-touch-dev/examples COMPONENT development)
