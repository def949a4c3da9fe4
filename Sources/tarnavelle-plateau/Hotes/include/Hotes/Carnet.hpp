// The flight log of one agent over there, and the log of its hooks here, which gets what was read of it. How
// far it was read stands in the log here, in the very write that appends: a board that is killed loses no line
// and gives none twice. One thread at a time.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace tarnavelle::Plateau {

/// Appends to a log what the link itself has to say in it: one of the names that `Crochets` knows. Of the lines
/// of over there none that holds one counts.
bool direDuLien(const std::filesystem::path& journal, std::string_view crochet);

class Carnet {
 public:
  Carnet(std::string session, std::filesystem::path journal);

  const std::string& session() const { return session_; }
  const std::filesystem::path& journal() const { return journal_; }

  /// Whether there was ever a log over there.
  bool connu() const { return curseur_.has_value(); }

  /// Where to read, when its log over there is that long; nothing when there is nothing new.
  std::optional<std::int64_t> aLire(std::int64_t taille);
  /// Appends what was read from there. False when it could not be: it is to be read again.
  bool noter(std::string_view lu);

 private:
  std::string session_;
  std::filesystem::path journal_;
  std::optional<std::int64_t> curseur_;  ///< absent until the first reading of a log that nobody had read
};

}  // namespace tarnavelle::Plateau
