# The compiler's own libraries and zlib, which Windows looks for beside a program: beside ours, and in what is installed.
# SPDX-License-Identifier: see LICENSE

foreach(name libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll zlib1.dll)
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${name} OUTPUT_VARIABLE file
        OUTPUT_STRIP_TRAILING_WHITESPACE
    )
    configure_file(${file} ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${name} COPYONLY)
    install(FILES ${file} DESTINATION ${CMAKE_INSTALL_BINDIR})
endforeach()
