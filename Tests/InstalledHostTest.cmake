# Installs the project into a folder of its own, builds the example host against what is there alone, and runs it.
#
#   cmake -DBUILD=... -DSOURCE=... -DWORK=... -DCOMPILER=... -DNM=... -P InstalledHostTest.cmake
file(REMOVE_RECURSE ${WORK})

function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
    if(NOT status EQUAL 0)
        message(FATAL_ERROR "${ARGN} gave ${status}:\n${output}")
    endif()
    set(output "${output}" PARENT_SCOPE)
endfunction()

run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${WORK}/installed)
run(${CMAKE_COMMAND} -E copy_directory ${SOURCE}/Examples/host ${WORK}/source) # nothing else of the tree in reach
run(${CMAKE_COMMAND} -S ${WORK}/source -B ${WORK}/build -G Ninja -DCMAKE_BUILD_TYPE=Debug
    -DCMAKE_CXX_COMPILER=${COMPILER} -DCMAKE_PREFIX_PATH=${WORK}/installed)
run(${CMAKE_COMMAND} --build ${WORK}/build)
run(${WORK}/build/example_host)
if(NOT output MATCHES "event mask 0x20000.*DisjointImageCount")
    message(FATAL_ERROR "no tap was seen:\n${output}")
endif()

# The same host with a device that cannot be opened lets everything go.
file(READ ${WORK}/source/main.cpp host)
string(REGEX REPLACE "(IOReturn open[^\n]*)kIOReturnSuccess" "\\1kIOReturnNoDevice" host "${host}")
file(WRITE ${WORK}/source/main.cpp "${host}")
run(${CMAKE_COMMAND} --build ${WORK}/build)
execute_process(COMMAND ${CMAKE_COMMAND} -E env VELTO_LOG=debug ${WORK}/build/example_host RESULT_VARIABLE status
                ERROR_VARIABLE output)
if(NOT status EQUAL 1 OR NOT output MATCHES "cannot be opened" OR NOT output MATCHES "stop\n.*dealloc\n")
    message(FATAL_ERROR "a host that failed gave ${status} and left its service:\n${output}")
endif()

# The module exports its factory and nothing else.
file(GLOB_RECURSE module ${WORK}/installed/*/VeltoTouchHIDService.so)
run(${NM} -D --defined-only --format=posix ${module})
if(NOT output MATCHES "^VeltoTouchHIDServiceFactory T [^\n]*\n$")
    message(FATAL_ERROR "the module exports:\n${output}")
endif()

# The installed program finds the plug-in by itself, the same in another place.
file(RENAME ${WORK}/installed ${WORK}/moved)
run(${WORK}/moved/bin/velto run --device sim:tap:play-pause --jsonl)
if(NOT output MATCHES "\"gesture\":\"tap\"")
    message(FATAL_ERROR "the installed program saw no tap:\n${output}")
endif()
file(REMOVE_RECURSE ${WORK})
