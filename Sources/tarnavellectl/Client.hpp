// The command-line client: one command line carried out, one exit status. A verb is one call of the door;
// its reply is shown as a sentence, as data laid out, or as it came. The client is one thread: what takes a
// `Session` serves one at a time.
#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "Session.hpp"
#include "Socle/JSON.hpp"

namespace tarnavelle::Client {

/// Carries out the words that follow the program's name and returns the exit status (`Statut`).
int executer(const std::vector<std::string>& mots, Session& session);

/// How long to wait for the door's answer to a body. A verb whose row names a delay may take the one it is
/// given, up to the door's own ceiling; any other a minute and a half, for some go through a model.
std::chrono::seconds patience(const Json& corps);

}  // namespace tarnavelle::Client
