# What belongs to an installed Kelp, and where it lies.
include(GNUInstallDirs)

install(TARGETS kelp RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
# Where kelp looks for them, seen from its own folder.
install(TARGETS kelp-sound-child kelp-capture-program RUNTIME DESTINATION libexec/kelp)
install(DIRECTORY ${CMAKE_BINARY_DIR}/tray DESTINATION ${CMAKE_INSTALL_DATADIR}/kelp)
install(FILES packaging/app.kelp.Kelp.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES packaging/kelp.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)

set(icons ${CMAKE_INSTALL_DATADIR}/icons/hicolor)
install(FILES resources/logo/kelp.svg DESTINATION ${icons}/scalable/apps RENAME app.kelp.Kelp.svg)
# Pictures for desktops that draw no SVG.
find_program(RSVG_CONVERT rsvg-convert)
if(RSVG_CONVERT)
    foreach(size 16 22 24 32 48 64 128 256 512)
        set(picture ${CMAKE_BINARY_DIR}/icons/${size}.png)
        add_custom_command(OUTPUT ${picture} DEPENDS ${CMAKE_SOURCE_DIR}/resources/logo/kelp.svg
            COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_BINARY_DIR}/icons
            COMMAND ${RSVG_CONVERT} --width ${size} --height ${size} --output ${picture}
                ${CMAKE_SOURCE_DIR}/resources/logo/kelp.svg)
        list(APPEND pictures ${picture})
        install(FILES ${picture} DESTINATION ${icons}/${size}x${size}/apps RENAME app.kelp.Kelp.png)
    endforeach()
    add_custom_target(kelp-icons ALL DEPENDS ${pictures})
endif()

configure_file(packaging/app.kelp.Kelp.metainfo.xml.in ${CMAKE_BINARY_DIR}/app.kelp.Kelp.metainfo.xml @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/app.kelp.Kelp.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
