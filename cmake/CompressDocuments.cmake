# Compresses manual pages and changelogs of what is about to be packaged, as Debian has them: without names and times.
file(GLOB_RECURSE documents ${CPACK_TEMPORARY_DIRECTORY}/runtime/usr/share/man/*
     ${CPACK_TEMPORARY_DIRECTORY}/changelog ${CPACK_TEMPORARY_DIRECTORY}/changelog.Debian)
if(NOT documents)
    message(FATAL_ERROR "no document is about to be packaged below ${CPACK_TEMPORARY_DIRECTORY}")
endif()
execute_process(COMMAND gzip -9 --no-name --force ${documents} COMMAND_ERROR_IS_FATAL ANY)
