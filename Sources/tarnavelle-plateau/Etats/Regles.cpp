// Reading a file of rules.
#include "Etats/Regles.hpp"

#include <algorithm>
#include <array>
#include <utility>

#include "ReglesInterne.hpp"
#include "Socle/LectureJSON.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Plateau {
namespace {

constexpr std::size_t tailleMax = 64 * 1024;
constexpr std::int64_t memoireMotif = 1 << 20;  // bytes

using Boite = Regles::Corps::Boite;

constexpr std::array<std::pair<std::string_view, Motif Boite::*>, 7> motifsDeBoite = {
    {{"boite.avant", &Boite::avant},
     {"boite.debut", &Boite::debut},
     {"boite.suite", &Boite::suite},
     {"boite.apres", &Boite::apres},
     {"boite.vide", &Boite::vide},
     {"boite.indice", &Boite::indice},
     {"boite.collage", &Boite::collage}}};
constexpr std::array<std::pair<std::string_view, std::size_t Boite::*>, 2> nombresDeBoite = {
    {{"boite.pied", &Boite::pied}, {"boite.sous", &Boite::sous}}};
constexpr std::array<std::pair<std::string_view, std::string Signes::*>, 3> signes = {
    {{"commandes", &Signes::commandes}, {"menus", &Signes::menus}, {"coupures", &Signes::coupures}}};
constexpr std::array<std::pair<std::string_view, Regle::Effet>, 5> effets = {
    {{"travaille", Regle::Effet::travaille},
     {"besoin", Regle::Effet::besoin},
     {"repos", Regle::Effet::repos},
     {"file", Regle::Effet::enFile},
     {"interrompu", Regle::Effet::interrompu}}};
constexpr std::array<std::pair<std::string_view, Regle::Lieu>, 4> lieux = {{{"bas", Regle::Lieu::bas},
                                                                            {"dessus", Regle::Lieu::dessus},
                                                                            {"dessous", Regle::Lieu::dessous},
                                                                            {"boite", Regle::Lieu::boite}}};

template <class Table>
auto chercher(const Table& table, std::string_view nom) -> std::optional<decltype(table[0].second)> {
  for (const auto& [cle, valeur] : table)
    if (cle == nom) return valeur;
  return std::nullopt;
}

/// The first word, taken off the text with the blanks after it.
std::string_view mot(std::string_view& texte) {
  const auto fin = std::min(texte.find_first_of(" \t"), texte.size());
  const std::string_view premier = texte.substr(0, fin);
  texte = Texte::rognerBlancs(texte.substr(fin));
  return premier;
}

std::optional<std::size_t> nombre(std::string_view texte) {
  const auto valeur = entierDecimal(texte);
  if (!valeur || *valeur < 0 || *valeur > 1000) return std::nullopt;
  return static_cast<std::size_t>(*valeur);
}

/// A line that is wrong: why, as a clause.
using Plainte = std::optional<std::string>;

Plainte compiler(std::string_view texte, int groupes, Motif& ou) {
  if (texte.empty()) return "il manque une expression";
  RE2::Options options;
  options.set_log_errors(false);
  options.set_max_mem(memoireMotif);
  auto motif = std::make_unique<const RE2>(piece(texte), options);
  if (!motif->ok()) return "expression illisible, « " + std::string(texte) + " » : " + motif->error();
  if (motif->NumberOfCapturingGroups() < groupes)
    return "l'expression doit capturer le texte, entre parenthèses";
  ou = std::move(motif);
  return std::nullopt;
}

/// "bas:12", "boite".
Plainte lireLieu(std::string_view texte, Regle& regle) {
  const auto deux = texte.find(':');
  const auto lieu = chercher(lieux, texte.substr(0, deux));
  if (!lieu) return "lieu inconnu, « " + std::string(texte) + " » : ni bas, ni dessus, ni dessous, ni boite";
  const auto lignes = deux == texte.npos ? std::optional<std::size_t>(1) : nombre(texte.substr(deux + 1));
  if (!lignes) return "nombre de lignes illisible, « " + std::string(texte) + " »";
  regle.lieu = *lieu;
  regle.lignes = *lignes;
  return std::nullopt;
}

Plainte lireLigne(std::string_view ligne, Regles::Corps& corps) {
  std::string_view reste = ligne;
  const std::string_view cle = mot(reste);
  if (const auto membre = chercher(motifsDeBoite, cle))
    return compiler(reste, cle == "boite.debut" || cle == "boite.suite" || cle == "boite.indice" ? 1 : 0,
                    corps.boite.*(*membre));
  if (const auto membre = chercher(nombresDeBoite, cle)) {
    const auto valeur = nombre(reste);
    if (!valeur) return "nombre illisible, « " + std::string(reste) + " »";
    corps.boite.*(*membre) = *valeur;
    return std::nullopt;
  }
  if (cle == "titre.travaille") return compiler(reste, 0, corps.titre);
  if (cle == "marge") return compiler(reste, 0, corps.marge);
  if (cle == "decor") return compiler(reste, 0, corps.decor);
  if (cle == "version") return compiler(reste, 1, corps.version);
  if (cle == "consigne") return compiler(reste, 1, corps.consigne);
  if (cle == "cadre") return compiler(reste, 0, corps.cadre.emplace_back());
  if (const auto membre = chercher(signes, cle)) {
    corps.signes.*(*membre) = reste;
    return std::nullopt;
  }
  if (cle == "garde") {
    if (reste.empty()) return "il manque un texte";
    corps.gardes.emplace_back(reste);
    return std::nullopt;
  }
  const auto effet = chercher(effets, cle);
  if (!effet) return "mot inconnu, « " + std::string(cle) + " »";
  Regle regle{*effet, std::string(mot(reste)), {}, 0, {}};
  if (regle.nom.empty()) return "il manque le nom de la règle";
  if (auto plainte = lireLieu(mot(reste), regle)) return plainte;
  if (auto plainte = compiler(reste, 0, regle.motif)) return plainte;
  corps.regles.push_back(std::move(regle));
  return std::nullopt;
}

}  // namespace

std::optional<std::string> groupe(const Motif& motif, std::string_view texte) {
  re2::StringPiece capture;
  if (!motif || !RE2::PartialMatch(piece(texte), *motif, &capture)) return std::nullopt;
  return std::string(capture.data() ? std::string_view(capture.data(), capture.size()) : std::string_view());
}

std::string Signes::aPoser(const std::string& texte) const {
  const auto fin = texte.find_last_of(" \t\n");
  const std::size_t mot = fin == std::string::npos ? 0 : fin + 1;
  const bool menu = mot < texte.size() && menus.find(texte[mot]) != std::string::npos;
  const bool coupure = !texte.empty() && coupures.find(texte.back()) != std::string::npos;
  return menu || coupure ? texte + " " : texte;
}

Resultat<Regles, std::string> Regles::lire(std::string_view texte) {
  if (texte.size() > tailleMax) return Sinon{std::string("plus de 64 Kio")};
  auto corps = std::make_shared<Corps>();
  texte = Texte::sansMarqueDOrdre(texte);
  for (std::size_t numero = 1; !texte.empty(); ++numero) {
    const auto fin = std::min(texte.find('\n'), texte.size());
    const std::string_view ligne = Texte::rogner(texte.substr(0, fin));
    texte.remove_prefix(std::min(fin + 1, texte.size()));
    if (ligne.empty() || ligne.starts_with('#')) continue;
    if (!Texte::utf8Valide(ligne))
      return Sinon{"ligne " + std::to_string(numero) + " : ce n'est pas de l'UTF-8"};
    if (const auto plainte = lireLigne(ligne, *corps))
      return Sinon{"ligne " + std::to_string(numero) + " : " + *plainte};
  }
  return Regles(std::move(corps));
}

bool Regles::saitLire() const { return !corps_->regles.empty(); }

std::optional<std::string> Regles::version(const std::vector<std::string>& lignes) const {
  for (const std::string& ligne : lignes)
    if (auto version = groupe(corps_->version, ligne)) return std::string(Texte::premiers(*version, 30));
  return std::nullopt;
}

const Signes& Regles::signes() const { return corps_->signes; }

const std::vector<std::string>& Regles::gardes() const { return corps_->gardes; }

std::optional<std::string> Regles::titreTravaille(std::string_view titre) const {
  if (!trouve(corps_->titre, titre)) return std::nullopt;
  return std::string(Texte::premiers(Texte::rogner(titre), 100));
}

}  // namespace tarnavelle::Plateau
