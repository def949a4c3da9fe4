# What CPack makes: a tarball of the whole and, on Debian, four packages: the programs, the board, the voice, and the
# kit to build on.
set(CPACK_GENERATOR TGZ)
set(CPACK_VERBATIM_VARIABLES TRUE)
set(CPACK_STRIP_FILES TRUE)
set(CPACK_PACKAGE_VENDOR Tarnavelle)
set(CPACK_PACKAGE_CONTACT "Tarnavelle <tarnavelle@localhost>")
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

find_program(TARNAVELLE_SHLIBDEPS dpkg-shlibdeps)
if(TARNAVELLE_SHLIBDEPS)
  list(APPEND CPACK_GENERATOR DEB)

  # proprietaires(VARIABLE FILE...): the packages that hold these, by the names that they have on this system.
  function(proprietaires resultat)
    execute_process(COMMAND dpkg-query --search ${ARGN} OUTPUT_VARIABLE trouves ERROR_QUIET)
    string(REGEX MATCHALL "[^\n]+\n" trouves "${trouves}")
    list(TRANSFORM trouves REPLACE ":.*" "")
    set(${resultat} ${trouves} PARENT_SCOPE)
  endfunction()
  # licences(COMPONENT FOLDER PACKAGE...): programs carry these libraries, whose licences ask to be told of; Boost's asks
  # nothing of programs.
  function(licences composant dossier)
    list(FILTER ARGN EXCLUDE REGEX boost)
    foreach(paquet IN LISTS ARGN)
      install(FILES /usr/share/doc/${paquet}/copyright RENAME ${paquet} COMPONENT ${composant}
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${dossier}/licences)
    endforeach()
  endfunction()

  # The kit needs what this build found. The names of nlohmann's types carry its version.
  get_target_property(url Boost::url LOCATION)
  proprietaires(proprietaires ${OPENSSL_INCLUDE_DIR}/openssl/ssl.h ${TARNAVELLE_OPENSSL_ARCHIVES} ${url} ${utf8proc_LIBRARY}
    ${nlohmann_json_CONFIG})
  if(TARNAVELLE_STATIQUE)
    licences(programmes tarnavelle ${proprietaires})
    if(TARNAVELLE_VOIX)
      licences(voix tarnavelle-voix ${proprietaires})
    endif()
    if(TARNAVELLE_PLATEAU)
      get_target_property(re2 re2::re2 LOCATION)
      proprietaires(du_plateau ${re2} ${SQLite3_LIBRARY})
      licences(plateau tarnavelle-plateau ${du_plateau})
    endif()
  endif()
  set(version ${nlohmann_json_VERSION})
  list(TRANSFORM proprietaires REPLACE "nlohmann.*" "\\0 (>= ${version}), \\0 (<< ${version}.0~)")
  list(JOIN proprietaires ", " CPACK_DEBIAN_KIT_PACKAGE_DEPENDS)
endif()

set(CPACK_DEB_COMPONENT_INSTALL TRUE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/PaquetsDebian.cmake)

set(CPACK_DEBIAN_PROGRAMMES_PACKAGE_NAME tarnavelle)
set(CPACK_DEBIAN_PROGRAMMES_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PROGRAMMES_PACKAGE_SHLIBDEPS TRUE)
# For a door behind https only.
set(CPACK_DEBIAN_PROGRAMMES_PACKAGE_RECOMMENDS ca-certificates)
set(CPACK_DEBIAN_PROGRAMMES_DESCRIPTION "MCP bridge and shell client of the Tarnavelle cockpit
tarnavelle-mcp gives coding agents the verbs of the cockpit's control door as
MCP tools; tarnavellectl gives them to a shell, and with tarnavelle-hermes
hears the remote agent and talks to it.")
# For the remote agent's own machine.
set(CPACK_DEBIAN_PROGRAMMES_PACKAGE_SUGGESTS openssh-client)

# It starts the bridge for its agents, and the client for their hooks.
set(CPACK_DEBIAN_PLATEAU_PACKAGE_NAME tarnavelle-plateau)
set(CPACK_DEBIAN_PLATEAU_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PLATEAU_PACKAGE_SHLIBDEPS TRUE)
set(CPACK_DEBIAN_PLATEAU_PACKAGE_DEPENDS "tarnavelle (= ${PROJECT_VERSION}), tmux (>= 3.2)")
# Without any font, pictures of terminals are refused; without ssh, agents on other machines.
set(CPACK_DEBIAN_PLATEAU_PACKAGE_RECOMMENDS "fonts-dejavu-core, openssh-client")
set(CPACK_DEBIAN_PLATEAU_DESCRIPTION "board of AI coding agents on real terminals
tarnavelle-plateau opens the control door of Tarnavelle on tmux: coding agents
work in its terminals, are driven by each other, and outlive the door.")

# Its sound libraries are the machine's.
set(CPACK_DEBIAN_VOIX_PACKAGE_NAME tarnavelle-voix)
set(CPACK_DEBIAN_VOIX_PACKAGE_SECTION sound)
set(CPACK_DEBIAN_VOIX_PACKAGE_SHLIBDEPS TRUE)
set(CPACK_DEBIAN_VOIX_PACKAGE_RECOMMENDS ca-certificates)
set(CPACK_DEBIAN_VOIX_DESCRIPTION "spoken conversation with the Tarnavelle cockpit
tarnavelle-voix joins a microphone, a loudspeaker and a realtime voice service,
which steers coding agents with the verbs of the cockpit's control door.")

set(CPACK_DEBIAN_KIT_PACKAGE_NAME libtarnavellekit-dev)
set(CPACK_DEBIAN_KIT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_KIT_DESCRIPTION "domain kit of the Tarnavelle cockpit (C++20 headers and archives)
The verbs of the control door and its replies, the agent programs, the
realtime voice and the remote agent, for CMake and for pkg-config.")

include(CPack)
