// What the client can be asked for: the verbs of the door, and the commands that it carries out by itself,
// described as verbs are. Whatever names a command (splitting, help, completion, manual) goes through
// here. Constant tables and plain functions, safe from any thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Porte/LigneVerbe.hpp"
#include "Porte/OutilVoix.hpp"
#include "Session.hpp"

namespace tarnavelle {

/// What the texts given to a command may be.
enum class Choix { libre, commande, shell, hermes };

struct CommandeLocale {
  std::string_view bref;  ///< the command in one line of a list; its description begins with it
  OutilVoix outil;
  std::vector<std::string_view> alias;                       ///< other names, normalised
  int (*executer)(Session& session, const Json& arguments);  ///< returns the exit status; null for a service
  Choix choix = Choix::libre;
  /// Of a board of terminals: asked of the door as a verb is, under the command's own name.
  struct Service {
    std::vector<std::string_view> agents{};  ///< the parameters that name one
    std::string_view confirmation{};         ///< the flag without which it only says what it would do
  };
  std::optional<Service> service{};
};

const std::vector<CommandeLocale>& commandesLocales();

/// The verbs of the door as this client takes them: some have a flag that asks a board of terminals for more.
const std::vector<OutilVoix>& verbes();

/// The service that a verb becomes by that flag, with what it then takes in place of the verb's own; null when
/// it becomes none.
const OutilVoix* precision(const OutilVoix& verbe, std::string_view drapeau);

/// The command that a word names, whatever its case, its dashes, or the English alias it is.
struct CommandeNommee {
  const OutilVoix* outil = nullptr;  ///< null when no verb and no command has that name
  const CommandeLocale* locale = nullptr;
};
CommandeNommee commande(std::string_view mot);

/// The names of every verb and command as they are shown.
std::vector<std::string> nomsDesCommandes();

/// The name that a word which names no command probably means; that of an MCP tool means its verb.
std::optional<std::string> nomVoulu(std::string_view mot);

/// "Verbe inconnu", with the name that was probably meant.
std::string verbeInconnu(std::string_view mot);

/// A verb or command in one line of a list.
std::string_view enBref(const OutilVoix& outil);

/// What a parameter designates, when it is more than a text.
std::optional<Designe> designe(const OutilVoix& outil, const ParamVoix& parametre);

/// Whether a boolean is true when nothing gives it: false is then the value worth giving.
bool vraiParDefaut(const OutilVoix& outil, const ParamVoix& parametre);

/// The aliases of a verb or command.
std::vector<std::string_view> autresNoms(const OutilVoix& outil);

/// A parameter as an option: "--depuis-prompt".
std::string commeOption(const ParamVoix& parametre);

}  // namespace tarnavelle
