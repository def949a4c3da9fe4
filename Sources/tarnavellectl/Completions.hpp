// What may stand at the cursor of a command line being typed. The shells ask the client itself, at each
// completion, so that what they offer is always what the installed client knows.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "Session.hpp"

namespace tarnavelle::Completions {

/// The command line to complete when `mots` asks for it ("completions proposer MOT…"): the words after the
/// program's name as they are typed, up to the one at the cursor, which may be empty.
std::optional<std::vector<std::string>> motsACompleter(const std::vector<std::string>& mots);

struct Candidat {
  std::string mot;
  std::string description;
  bool operator==(const Candidat&) const = default;
};

/// What the last of the words may be, whatever its beginning: the shell keeps those that fit. None where
/// anything goes; the shell then offers file names. `agents` is called only where an agent is named.
std::vector<Candidat> candidats(std::vector<std::string> mots,
                                const std::function<std::vector<std::string>()>& agents);

/// Writes the candidates, one a line, a tab before each description.
int proposer(const std::vector<std::string>& mots, Session& session);

}  // namespace tarnavelle::Completions
