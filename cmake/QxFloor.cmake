# How a floor of the library enters its files.
# SPDX-License-Identifier: see LICENSE

# qx_floor(HEADERS header... SOURCES source...): the public headers (in include/) and the sources and internal headers
# (beside the caller's list) of one floor. The lists of all floors together are the library.
function(qx_floor)
    cmake_parse_arguments(PARSE_ARGV 0 floor "" "" "HEADERS;SOURCES")
    if(floor_UNPARSED_ARGUMENTS)
        message(FATAL_ERROR "qx_floor: unknown ${floor_UNPARSED_ARGUMENTS}")
    endif()
    list(TRANSFORM floor_HEADERS PREPEND ${PROJECT_SOURCE_DIR}/include/)
    list(TRANSFORM floor_SOURCES PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
    if(floor_HEADERS)
        target_sources(qxbase PUBLIC FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR}/include FILES ${floor_HEADERS})
    endif()
    target_sources(qxbase PRIVATE ${floor_SOURCES})
endfunction()
