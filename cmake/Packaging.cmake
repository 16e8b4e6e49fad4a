# Debian packages, one a component: `tools/dev package` makes them. What a program links to is found by
# dpkg-shlibdeps; here stands what it loads while it runs.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "personal diary in plain Markdown files")
set(CPACK_PACKAGE_CONTACT "Nomely <nomely@localhost>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS OFF)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SECTION text)
set(CPACK_COMPONENTS_ALL command)

set(CPACK_DEBIAN_COMMAND_PACKAGE_NAME nomely)
set(CPACK_COMPONENT_COMMAND_DESCRIPTION "Each note is one file in a folder a day. This is the command, with the chat
bot, backups, imports and exports.")
set(CPACK_DEBIAN_COMMAND_PACKAGE_DEPENDS
  "libcurl4, libdeflate0, libssl3, libwslay1, zlib1g, ca-certificates, tzdata")
set(CPACK_DEBIAN_COMMAND_PACKAGE_RECOMMENDS "libsecret-1-0")
set(CPACK_DEBIAN_COMMAND_PACKAGE_SUGGESTS "nomely-desktop")

if(NOMELY_DESKTOP)
  list(APPEND CPACK_COMPONENTS_ALL desktop)
  set(CPACK_DEBIAN_DESKTOP_PACKAGE_NAME nomely-desktop)
  set(CPACK_COMPONENT_DESKTOP_DESCRIPTION "The window: write a line, and find what you wrote ten years ago, in a
timeline, a search and an editor over notes that are ordinary files.")
  # Modules, plugins and type, as they are installed for whoever builds it.
  file(STRINGS ${CMAKE_SOURCE_DIR}/tools/packages.txt loaded REGEX "^(qml6-module-|fonts-|libqt6svg6)")
  list(TRANSFORM loaded REPLACE "[ #].*" "")
  list(JOIN loaded ", " loaded)
  set(CPACK_DEBIAN_DESKTOP_PACKAGE_DEPENDS "nomely (= ${PROJECT_VERSION}), ${loaded}")
  set(CPACK_DEBIAN_DESKTOP_PACKAGE_RECOMMENDS
    "libheif1, qt6-image-formats-plugins, qt6-wayland, xdg-desktop-portal, xdg-utils")
  set(CPACK_DEBIAN_DESKTOP_PACKAGE_SUGGESTS "nomely-diagrams, fcitx5-frontend-qt6")
endif()

if(NOMELY_DIAGRAMS AND EXISTS ${CMAKE_SOURCE_DIR}/build/mermaid/mermaid.min.js)
  list(APPEND CPACK_COMPONENTS_ALL diagrams)
  set(CPACK_DEBIAN_DIAGRAMS_PACKAGE_NAME nomely-diagrams)
  set(CPACK_COMPONENT_DIAGRAMS_DESCRIPTION "Draws the mermaid blocks of notes, with a browser engine that meets no network.")
  set(CPACK_DEBIAN_DIAGRAMS_PACKAGE_DEPENDS
    "nomely-desktop (= ${PROJECT_VERSION}), libqt6webenginecore6-bin, libqt6webengine6-data")
endif()

include(CPack)
