# Checks that the shared library needs nothing but the C and C++ runtime.
#   cmake -DREADELF=... -DLIBRARY=... -P needed_libraries_test.cmake
execute_process(COMMAND ${CMAKE_COMMAND} -E env LC_ALL=C ${READELF} --dynamic ${LIBRARY}
    OUTPUT_VARIABLE output RESULT_VARIABLE status)
if(NOT status EQUAL 0)
    message(FATAL_ERROR "${READELF} failed on ${LIBRARY}")
endif()

string(REGEX MATCHALL "\\(NEEDED\\)[^\n]*" lines "${output}")
set(names "")
foreach(line IN LISTS lines)
    string(REGEX REPLACE ".*\\[(.*)\\].*" "\\1" name "${line}")
    list(APPEND names ${name})
    if(NOT name MATCHES "^lib(c|m|stdc\\+\\+|gcc_s)\\.so\\.[0-9]+$"
            AND NOT name MATCHES "^ld-linux-x86-64\\.so\\.[0-9]+$")
        message(SEND_ERROR "needs ${name}")
    endif()
endforeach()
message(STATUS "needs ${names}")
if(NOT names MATCHES "libc\\.so")
    message(SEND_ERROR "the C library is not among the needed ones")
endif()
