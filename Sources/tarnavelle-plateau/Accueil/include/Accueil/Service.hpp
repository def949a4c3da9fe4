// What has a door opened with the user's session, and opened again should it fail, while the agents it leaves
// behind go on: a unit of systemd's user manager (man systemd.service, systemd.syntax), or a launch agent of
// macOS (man launchd.plist). Pure functions.
#pragma once

#include <string>
#include <vector>

namespace tarnavelle::Plateau::Service {

struct Demande {
  std::vector<std::string> mots;  ///< the program, by its whole path, and its arguments
  std::string titre;              ///< what it is, in French
  std::string nom;                ///< of the service
  std::string chemins;            ///< the PATH that its tools are found on
  std::string personnel;          ///< the user's home folder
};

/// The whole text of the unit. A NUL ends a word, as everywhere.
std::string systemd(const Demande& demande);
/// The whole text of the property list.
std::string launchd(const Demande& demande);

}  // namespace tarnavelle::Plateau::Service
