# Installs the build into a scratch prefix, builds the consumer against it and runs it.
# Expects BUILD_DIR, SOURCE_DIR, WORK_DIR, VERSION and optionally LINK_FLAGS.
file(REMOVE_RECURSE "${WORK_DIR}")

function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "failed: ${ARGN}\n${output}")
    endif()
    set(last_output "${output}" PARENT_SCOPE)
endfunction()

run("${CMAKE_COMMAND}" --install "${BUILD_DIR}" --prefix "${WORK_DIR}/prefix")
foreach(completion IN ITEMS bash-completion/completions/qvkit zsh/vendor-completions/_qvkit)
    if(NOT EXISTS "${WORK_DIR}/prefix/share/${completion}")
        message(FATAL_ERROR "the install lacks share/${completion}")
    endif()
endforeach()
run("${CMAKE_COMMAND}" -S "${SOURCE_DIR}" -B "${WORK_DIR}/build" -G Ninja
    "-DCMAKE_PREFIX_PATH=${WORK_DIR}/prefix" "-DCMAKE_EXE_LINKER_FLAGS=${LINK_FLAGS}")
run("${CMAKE_COMMAND}" --build "${WORK_DIR}/build")
run("${WORK_DIR}/build/qvkit-consumer")
if(NOT last_output STREQUAL "QVKit ${VERSION} {1, 2}\n")
    message(FATAL_ERROR "unexpected output: '${last_output}'")
endif()
message(STATUS "consumer printed: ${last_output}")
