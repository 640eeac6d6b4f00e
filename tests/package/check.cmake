# Installs the built library into a scratch prefix, then uses it from there
# as a user would: the consumer project found with CMake (shared and
# static), the consumer compiled with pkg-config's flags, and the Python
# module and its stub imported from the prefix.
set(prefix "${WORK_DIR}/prefix")
file(REMOVE_RECURSE "${WORK_DIR}")
separate_arguments(cxx_flags UNIX_COMMAND "${CXX_FLAGS}")
separate_arguments(linker_flags UNIX_COMMAND "${LINKER_FLAGS}")

function(run step)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE out ERROR_VARIABLE out)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "package check failed at ${step}:\n${out}")
    endif()
    message(STATUS "${step}: ${out}")
endfunction()

run(install ${CMAKE_COMMAND} --install "${BUILD_DIR}" --prefix "${prefix}")

run(configure ${CMAKE_COMMAND} -S "${SOURCE_DIR}" -B "${WORK_DIR}/build" "-DCMAKE_PREFIX_PATH=${prefix}"
    "-DCMAKE_CXX_COMPILER=${CXX_COMPILER}" "-DCMAKE_CXX_FLAGS=${CXX_FLAGS}"
    "-DCMAKE_EXE_LINKER_FLAGS=${LINKER_FLAGS}")
run(build ${CMAKE_COMMAND} --build "${WORK_DIR}/build")
run(run "${WORK_DIR}/build/consumer")
run(run_static "${WORK_DIR}/build/consumer_static")

file(GLOB_RECURSE pc_file "${prefix}/*/tylharttypes.pc")
find_program(PKG_CONFIG pkg-config)
if(NOT pc_file)
    message(FATAL_ERROR "package check failed: no tylharttypes.pc under ${prefix}")
elseif(NOT PKG_CONFIG)
    message(STATUS "pkg-config: not installed, the pkg-config build is not checked")
else()
    get_filename_component(pc_dir "${pc_file}" DIRECTORY)
    get_filename_component(lib_dir "${pc_dir}" DIRECTORY)
    set(ENV{PKG_CONFIG_PATH} "${pc_dir}")
    execute_process(COMMAND ${PKG_CONFIG} --cflags --libs tylharttypes OUTPUT_VARIABLE pc_flags
                    RESULT_VARIABLE result OUTPUT_STRIP_TRAILING_WHITESPACE)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "package check failed: pkg-config does not know tylharttypes")
    endif()
    separate_arguments(pc_flags UNIX_COMMAND "${pc_flags}")
    run(pkg_config_build ${CXX_COMPILER} ${cxx_flags} "${SOURCE_DIR}/consumer.cpp" ${pc_flags} ${linker_flags}
        -o "${WORK_DIR}/consumer_pkg_config")
    run(pkg_config_run ${CMAKE_COMMAND} -E env "LD_LIBRARY_PATH=${lib_dir}" "${WORK_DIR}/consumer_pkg_config")
endif()

# Written by the build when it has the Python module: PYTHON,
# PYTHON_ENVIRONMENT and PYTHON_DESTINATION (absolute for the interpreter's
# own site-packages, else under the prefix).
if(EXISTS "${BUILD_DIR}/python-package.cmake")
    include("${BUILD_DIR}/python-package.cmake")
    get_filename_component(module_dir "${PYTHON_DESTINATION}" ABSOLUTE BASE_DIR "${prefix}")
    file(GLOB module "${module_dir}/tylharttypes*.so")
    if(NOT module OR NOT EXISTS "${module_dir}/tylharttypes.pyi")
        message(FATAL_ERROR "package check failed: the Python module or its stub is not in ${module_dir}")
    endif()
    # One statement a line: arguments pass through a CMake list here.
    run(python_import ${CMAKE_COMMAND} -E env "PYTHONPATH=${module_dir}" ${PYTHON_ENVIRONMENT} ${PYTHON} -c
        "import tylharttypes as t
assert t.__file__.startswith('${module_dir}/'), t.__file__
d = t.CDefinition()
d.Initialize('pressure', t.ddoKVariableDef)
assert repr(d) == '<CDefinition Definition{Name:pressure}>', repr(d)
print(repr(d), t.__file__)")
endif()
