#include "GuetTmuxInterne.hpp"

#include <utility>

#include "PriseTmuxInterne.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Plateau {
namespace {

constexpr std::string_view rangGuets = "1";  ///< before a pane's number: beyond the session's own windows

std::string place(std::string_view rang) { return "=" + std::string(sessionPlateau) + ":" + std::string(rang); }

}  // namespace

GuetTmux::GuetTmux(std::string id) : id_(std::move(id)) {
  std::string numero = id_.substr(1);
  numero.insert(0, numero.size() < 6 ? 6 - numero.size() : 0, '0');
  place_ = place(std::string(rangGuets) + numero);
}

void GuetTmux::guetter() {
  ++compte_;
  echec_ = false;
}

void GuetTmux::laisser() {
  if (compte_ > 0) --compte_;
}

std::optional<std::string> GuetTmux::suite(Instant maintenant) {
  const auto envoyer = [&](Envoi envoi, std::string commandes) {
    envoi_ = envoi;
    return commandes;
  };
  const std::string taire = "refresh-client -A \"" + id_ + ":pause\"";
  const std::string entendre = "refresh-client -A \"" + id_ + ":continue\"";
  if (envoi_ != Envoi::aucun) return std::nullopt;
  if (voulu() && !lie_ && !echec_)
    return envoyer(Envoi::lier, "link-window -d -k -s " + id_ + " -t " + place_ + " ; " + entendre);
  // Kept to itself first: what tmux holds back for a client that no longer sees the window would grow for ever.
  if (!voulu() && lie_) return envoyer(Envoi::delier, taire + " ; unlink-window -k -t " + place_);
  if (lie_ && aTaire_) return envoyer(Envoi::taire, taire);
  if (lie_ && tu_ && reprise_ <= maintenant) return envoyer(Envoi::entendre, entendre);
  return std::nullopt;
}

std::optional<GuetTmux::Instant> GuetTmux::echeance() const {
  if (envoi_ != Envoi::aucun || !lie_ || !tu_) return std::nullopt;
  return reprise_;
}

bool GuetTmux::repondu(bool reussi) {
  switch (std::exchange(envoi_, Envoi::aucun)) {
    case Envoi::lier:
      lie_ = reussi;
      echec_ = !reussi;
      aTaire_ = tu_ = false;
      return true;  // what was written before was not told, and a failure is to be found out
    case Envoi::delier: lie_ = false; return false;
    case Envoi::taire:
      aTaire_ = false;
      tu_ = true;
      return false;
    case Envoi::entendre: tu_ = false; return true;
    case Envoi::aucun: break;
  }
  return false;
}

bool GuetTmux::ecrit(Instant maintenant) {
  if (!lie_ || aTaire_ || tu_) return false;
  aTaire_ = true;
  reprise_ = maintenant + silence;
  return true;
}

void GuetTmux::perdu() {
  envoi_ = Envoi::aucun;
  lie_ = echec_ = aTaire_ = tu_ = false;
}

std::string listerRestes() {
  return "list-windows -t =" + std::string(sessionPlateau) + ": -F \"#{window_index}\"";
}

std::string delierRestes(std::string_view places) {
  std::string commandes;
  for (const auto rang : Texte::mots(places))
    if (rang.size() >= 7 && rang.starts_with(rangGuets))
      commandes += (commandes.empty() ? "" : " ; ") + ("unlink-window -k -t " + place(rang));
  return commandes;
}

}  // namespace tarnavelle::Plateau
