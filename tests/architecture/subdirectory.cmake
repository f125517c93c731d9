# Builds a project that takes the library in by add_subdirectory.
#
#   cmake -D SOURCE=... -D WORK=... -D CONSUMER=... -D GENERATOR=... -D C_COMPILER=... -D CXX_COMPILER=... -P subdirectory.cmake
cmake_minimum_required(VERSION 3.21)

file(REMOVE_RECURSE ${WORK})
foreach(step IN ITEMS
    "${CMAKE_COMMAND};-G;${GENERATOR};-S;${CONSUMER}/subdirectory;-B;${WORK};-DKUVCV_SOURCE=${SOURCE};\
-DCMAKE_C_COMPILER=${C_COMPILER};-DCMAKE_CXX_COMPILER=${CXX_COMPILER}"
    "${CMAKE_COMMAND};--build;${WORK};--target;consumer"
    "${WORK}/consumer")
  execute_process(COMMAND ${step} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${step}\n${output}")
  endif()
endforeach()
