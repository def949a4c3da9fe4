// Tells that files of one folder have changed: at once by inotify on Linux; elsewhere, or when the system
// cannot watch, whoever waits looks again now and then. One thread waits, any thread may interrupt it.
#pragma once

#include <chrono>
#include <filesystem>
#include <memory>
#include <set>
#include <string>

namespace tarnavelle::Plateau {

class GuetFichiers {
 public:
  /// The folder must be there. `sansGuet`: between two looks where nothing tells of changes.
  explicit GuetFichiers(const std::filesystem::path& dossier,
                        std::chrono::milliseconds sansGuet = std::chrono::milliseconds(50));
  ~GuetFichiers();
  GuetFichiers(const GuetFichiers&) = delete;
  GuetFichiers& operator=(const GuetFichiers&) = delete;

  struct Changements {
    std::set<std::string> noms;  ///< of files of the folder
    bool tous = false;           ///< any of them may have changed
  };
  /// Waits for a change, at most that long. No names at the deadline or when interrupted.
  Changements attendre(std::chrono::milliseconds auPlus);

  /// Makes `attendre` return, now or the next time.
  void interrompre();

 private:
  struct Corps;
  const std::chrono::milliseconds sansGuet_;
  std::unique_ptr<Corps> corps_;
};

}  // namespace tarnavelle::Plateau
