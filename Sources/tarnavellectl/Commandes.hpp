// The commands that the client carries out by itself. Each takes its own arguments, checked against its
// description, writes what it has to say, and returns the exit status.
#pragma once

#include "Session.hpp"
#include "Socle/JSON.hpp"

namespace tarnavelle::Commandes {

int aide(Session& session, const Json& arguments);
int guide(Session& session, const Json& arguments);
int completions(Session& session, const Json& arguments);
int manuel(Session& session, const Json& arguments);
int crochet(Session& session, const Json& arguments);
int hermes(Session& session, const Json& arguments);
int porte(Session& session, const Json& arguments);

}  // namespace tarnavelle::Commandes
