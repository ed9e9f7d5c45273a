# Runs PROGRAM with the plain library of LIBRARY_DIR and with each of its variants that the
# processor supports, and fails unless all print the same.
set(plain ${WORK_DIR}/plain)
file(MAKE_DIRECTORY ${plain})
file(CREATE_LINK ${LIBRARY_DIR}/libZULTavIntervals.so ${plain}/libZULTavIntervals.so SYMBOLIC)
set(folders ${plain})

execute_process(COMMAND ${LOADER} --help OUTPUT_VARIABLE supported)
foreach(level x86-64-v3 x86-64-v4)
  if(supported MATCHES "${level} \\(supported")
    list(APPEND folders ${LIBRARY_DIR}/glibc-hwcaps/${level})
  else()
    message("skipped: the processor does not support ${level}")
  endif()
endforeach()

foreach(folder ${folders})
  execute_process(
    COMMAND ${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=${folder} ${PROGRAM}
    OUTPUT_VARIABLE output RESULT_VARIABLE status)
  message("${folder}: ${output}")
  if(status OR NOT output)
    message(FATAL_ERROR "${PROGRAM} failed: ${status}")
  endif()
  if(DEFINED expected AND NOT output STREQUAL expected)
    message(FATAL_ERROR "the variants differ")
  endif()
  set(expected "${output}")
endforeach()
