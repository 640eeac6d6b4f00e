# Installs the built library into a scratch prefix, then configures, builds
# and runs the consumer project against it (shared and static).
set(prefix "${WORK_DIR}/prefix")
file(REMOVE_RECURSE "${WORK_DIR}")
foreach(step IN ITEMS install configure build run run_static)
    if(step STREQUAL "install")
        set(cmd ${CMAKE_COMMAND} --install "${BUILD_DIR}" --prefix "${prefix}")
    elseif(step STREQUAL "configure")
        set(cmd ${CMAKE_COMMAND} -S "${SOURCE_DIR}" -B "${WORK_DIR}/build" "-DCMAKE_PREFIX_PATH=${prefix}"
                "-DCMAKE_CXX_COMPILER=${CXX_COMPILER}" "-DCMAKE_CXX_FLAGS=${CXX_FLAGS}"
                "-DCMAKE_EXE_LINKER_FLAGS=${LINKER_FLAGS}")
    elseif(step STREQUAL "build")
        set(cmd ${CMAKE_COMMAND} --build "${WORK_DIR}/build")
    elseif(step STREQUAL "run")
        set(cmd "${WORK_DIR}/build/consumer")
    else()
        set(cmd "${WORK_DIR}/build/consumer_static")
    endif()
    execute_process(COMMAND ${cmd} RESULT_VARIABLE result OUTPUT_VARIABLE out ERROR_VARIABLE out)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "package check failed at ${step}:\n${out}")
    endif()
endforeach()
message(STATUS "installed package found, built and run: ${out}")
