# Run by `cmake --install`: what is made while installing, or may have been made before (`make manual`).

function(put folder)
  cmake_path(ABSOLUTE_PATH folder BASE_DIRECTORY "${CMAKE_INSTALL_PREFIX}")
  file(INSTALL DESTINATION "${folder}" TYPE FILE FILES ${ARGN})
endfunction()

foreach(unit zebd zeb-labelserver)
  configure_file("${ZEB_INSTALL_FROM}/packaging/${unit}.service.in" "${ZEB_INSTALL_BUILT}/${unit}.service" @ONLY)
  put("${ZEB_UNIT_FOLDER}" "${ZEB_INSTALL_BUILT}/${unit}.service")
endforeach()

# Pages for man: those that `make manual` makes; else the one that is written by hand.
foreach(section 1 5 8)
  file(GLOB pages "${ZEB_INSTALL_FROM}/build/manual/man/*.${section}")
  if(NOT pages)
    file(GLOB pages "${ZEB_INSTALL_FROM}/packaging/*.${section}")
  endif()
  if(pages)
    put(share/man/man${section} ${pages})
  endif()
endforeach()
if(EXISTS "${ZEB_INSTALL_FROM}/build/manual/site/index.html")
  file(INSTALL DESTINATION "${CMAKE_INSTALL_PREFIX}/share/doc/zeb/html" TYPE DIRECTORY
       FILES "${ZEB_INSTALL_FROM}/build/manual/site/")
endif()

# What the shells complete, where the program can tell.
function(completion shell file folder)
  execute_process(COMMAND "${ZEB_INSTALL_BUILT}/zebctl" completion ${shell}
                  OUTPUT_FILE "${ZEB_INSTALL_BUILT}/completion/${file}" ERROR_QUIET RESULT_VARIABLE status)
  if(status EQUAL 0)
    put(${folder} "${ZEB_INSTALL_BUILT}/completion/${file}")
  endif()
endfunction()
file(MAKE_DIRECTORY "${ZEB_INSTALL_BUILT}/completion")
completion(bash zebctl share/bash-completion/completions)
# bash looks for a file by the name of the program.
if(EXISTS "${ZEB_INSTALL_BUILT}/completion/zebctl")
  foreach(program zeb-labelserver zebd zeb)
    configure_file("${ZEB_INSTALL_BUILT}/completion/zebctl" "${ZEB_INSTALL_BUILT}/completion/${program}" COPYONLY)
    put(share/bash-completion/completions "${ZEB_INSTALL_BUILT}/completion/${program}")
  endforeach()
endif()
completion(zsh _zebctl "${ZEB_ZSH_FOLDER}")
