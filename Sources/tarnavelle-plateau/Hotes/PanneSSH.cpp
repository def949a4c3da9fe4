#include "Hotes/PanneSSH.hpp"

#include <algorithm>

#include "Socle/Inoffensif.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Plateau {
namespace {

using Cause = PanneSSH::Cause;

constexpr std::size_t detailMax = 200;  // characters

/// What ssh says, the most telling first: several of them may stand in what it said.
struct Signe {
  std::string_view dit;
  Cause cause;
};
constexpr Signe signes[] = {
    {"REMOTE HOST IDENTIFICATION HAS CHANGED", Cause::cleChangee},
    {"host key for",
     Cause::cleChangee},  // "Offending … key", "… has changed and you have requested strict checking"
    {"REVOKED HOST KEY", Cause::cleChangee},
    {"Host key verification failed", Cause::cleInconnue},
    {"Permission denied", Cause::refuse},
    {"Too many authentication failures", Cause::refuse},
    {"No supported authentication methods", Cause::refuse},
    {"Could not resolve hostname", Cause::inconnu},
    {"hostname contains invalid characters", Cause::nom},
    {"Bad configuration option", Cause::configuration},
    {"bad configuration options", Cause::configuration},
    {"Bad owner or permissions", Cause::configuration},
    {"Can't open user config file", Cause::configuration},
    {"no matching", Cause::protocole},
    {"UNKNOWN port 65535", Cause::passage},  // so ssh calls what another program leads to
    {"Connection timed out", Cause::horsDelai},
    {"Operation timed out", Cause::horsDelai},
    {"timed out during banner exchange", Cause::horsDelai},
    {"Connection refused", Cause::injoignable},
    {"No route to host", Cause::injoignable},
    {"Network is unreachable", Cause::injoignable},
    {"Host is down", Cause::injoignable},
    {"kex_exchange_identification", Cause::injoignable},
    {"not responding", Cause::coupe},
    {"Connection reset", Cause::coupe},
    {"Connection closed", Cause::coupe},
    {"Broken pipe", Cause::coupe},
    {"closed by remote host", Cause::coupe},
};

std::string citer(std::string_view texte) {
  return "« " + Inoffensif::epurer(Texte::tronquer(Texte::reparer(texte), detailMax)) + " »";
}

constexpr std::string_view oubli = "ssh-keygen ";

std::string_view ligneDe(std::string_view texte, std::size_t ou) {
  const auto avant = texte.substr(0, ou).rfind('\n');
  const auto debut = avant == std::string_view::npos ? 0 : avant + 1;
  return Texte::rogner(texte.substr(debut, std::min(texte.find('\n', ou), texte.size()) - debut));
}

/// Whether a shell takes the words as they stand: somebody may type them as we say them.
bool sansPiege(std::string_view mots) {
  return mots.find_first_of("`$&;|<>(){}*?!#\\\n\r") == std::string_view::npos;
}

}  // namespace

PanneSSH PanneSSH::lire(std::string_view hote, std::string_view dit) {
  if (dit.find("Authenticated to ") != std::string_view::npos) return de(Cause::coupe, hote);
  // What follows is the other end's own text, whoever that is: of its words one cause alone is believed.
  if (const auto adieu = dit.find("Received disconnect from "); adieu != std::string_view::npos) {
    const auto texte = dit.substr(adieu);
    const bool refuse = texte.find("Too many authentication failures") != std::string_view::npos;
    return de(refuse ? Cause::refuse : Cause::autre, hote, texte.substr(0, texte.find('\n')));
  }
  for (const Signe& signe : signes) {
    const auto ou = dit.find(signe.dit);
    if (ou == std::string_view::npos) continue;
    const auto remede = signe.cause == Cause::cleChangee ? dit.find(oubli) : std::string_view::npos;
    return de(signe.cause, hote, ligneDe(dit, remede == std::string_view::npos ? ou : remede));
  }
  dit = Texte::rogner(dit);
  return de(dit.empty() ? Cause::coupe : Cause::autre, hote, ligneDe(dit, dit.size()));
}

PanneSSH PanneSSH::de(Cause cause, std::string_view hote, std::string_view detail) {
  const std::string h = citer(hote);
  const std::string nu = Inoffensif::epurer(hote);
  const auto phrase = [&]() -> std::string {
    switch (cause) {
      case Cause::nom: return h + " ne peut pas être le nom d'une machine.";
      case Cause::sansSSH: return "ssh n'est pas installé sur cette machine, ou n'est pas sur le PATH.";
      case Cause::configuration: return "ssh refuse sa configuration : " + citer(detail) + ".";
      case Cause::inconnu:
        return "Aucune machine ne s'appelle " + h +
               " : ni la configuration de ssh ni le réseau ne la connaissent.";
      case Cause::injoignable:
        return h + " ne répond pas : machine éteinte, réseau coupé, ou ssh fermé là-bas.";
      case Cause::passage:
        return "Ce qui mène à " + h +
               " (ProxyJump ou ProxyCommand) n'y est pas arrivé : essaie une fois à la main (ssh " + nu + ").";
      case Cause::horsDelai: return h + " ne répond pas à temps.";
      case Cause::cleChangee:
        return "La clé de " + h +
               " n'est plus celle que ssh connaît : la machine a été réinstallée, ou quelqu'un s'est mis entre "
               "elle et toi. Vérifie-la, puis : " +
               (detail.starts_with(oubli) && sansPiege(detail) ? Inoffensif::epurer(detail)
                                                               : std::string(oubli) + "-R " + nu) +
               ".";
      case Cause::cleInconnue:
        return "ssh ne connaît pas encore la clé de " + h + " : connecte-toi une fois à la main (ssh " + nu +
               ") pour l'accepter.";
      case Cause::refuse:
        return h +
               " refuse la clé, et aucun mot de passe n'est demandé ici : charge-la (ssh-add), ou installe-la "
               "là-bas (ssh-copy-id " +
               nu + ").";
      case Cause::protocole:
        return "ssh et " + h + " n'ont aucun algorithme en commun : " + citer(detail) + ".";
      case Cause::coupe: return "Le lien avec " + h + " est coupé.";
      case Cause::pasDeShell: return "Rien ne s'exécute sur " + h + " : le shell du compte n'y lance pas sh.";
      case Cause::autre: return "ssh n'a pas pu joindre " + h + " : " + citer(detail) + ".";
    }
    return {};
  };
  return {cause, phrase()};
}

bool PanneSSH::passagere() const {
  switch (cause) {
    case Cause::injoignable:
    case Cause::passage:
    case Cause::horsDelai:
    case Cause::coupe:
    case Cause::inconnu:  // as a machine that has lost its network says of any name
    case Cause::autre: return true;
    case Cause::nom:
    case Cause::sansSSH:
    case Cause::configuration:
    case Cause::cleChangee:
    case Cause::cleInconnue:
    case Cause::refuse:
    case Cause::protocole:
    case Cause::pasDeShell: return false;
  }
  return false;
}

}  // namespace tarnavelle::Plateau
