# What `cmake --install` puts where, for /usr/local and for packages alike.

set(ZEB_UNIT_FOLDER lib/systemd/system CACHE STRING "Where systemd's units go, below the prefix or absolute")
set(ZEB_ZSH_FOLDER share/zsh/site-functions CACHE STRING "Where zsh looks for completions, below the prefix")

install(TARGETS zebd zebctl zeb-labelserver RUNTIME DESTINATION bin)
install(DIRECTORY docs/manual examples DESTINATION share/doc/zeb
        PATTERN .gitattributes EXCLUDE PATTERN Languages EXCLUDE)
# The demo station, which the desktop program offers to set up, and the templates of zebctl setup.
install(FILES examples/demo.reg DESTINATION share/zeb/examples)
install(DIRECTORY examples/templates examples/now-playing-page DESTINATION share/zeb/examples
        PATTERN .gitattributes EXCLUDE)
if(TARGET zeb)
  install(TARGETS zeb RUNTIME DESTINATION bin)
  install(DIRECTORY examples/Languages DESTINATION share/zeb)
  install(FILES packaging/zeb.desktop DESTINATION share/applications)
  install(FILES packaging/zeb.svg DESTINATION share/icons/hicolor/scalable/apps)
  # Drawn from it, for desktops that load no SVG.
  foreach(size 16 24 32 48 64 128 256)
    install(FILES packaging/icons/zeb-${size}.png RENAME zeb.png DESTINATION share/icons/hicolor/${size}x${size}/apps)
  endforeach()
endif()
install(FILES packaging/zeb.sysusers DESTINATION lib/sysusers.d RENAME zeb.conf)
install(FILES packaging/zeb.tmpfiles DESTINATION lib/tmpfiles.d RENAME zeb.conf)

# The units name the programs where they really are; the prefix is known for sure only when installing.
set(ZEB_INSTALL_FROM "${PROJECT_SOURCE_DIR}")
set(ZEB_INSTALL_BUILT "${PROJECT_BINARY_DIR}")
foreach(name ZEB_INSTALL_FROM ZEB_INSTALL_BUILT ZEB_UNIT_FOLDER ZEB_ZSH_FOLDER)
  install(CODE "set(${name} \"${${name}}\")")
endforeach()
install(SCRIPT packaging/InstallMade.cmake)
