#include "Memoire.hpp"

#include <fcntl.h>
#include <sys/file.h>

#include <nlohmann/json.hpp>

#include "Agents/CarnetDeVol.hpp"
#include "Socle/EcritureJSON.hpp"
#include "Socle/Fichiers.hpp"
#include "Socle/LectureJSON.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle {
namespace {

using De = Memoire::Propos::De;

constexpr std::string_view noms[] = {"vous", "hermes", "note"};

/// The beginning of it, cut between two characters.
std::string borne(std::string texte) {
  if (texte.size() <= Memoire::texteMax) return texte;
  auto fin = Memoire::texteMax;
  while (fin > 0 && (static_cast<unsigned char>(texte[fin]) & 0xC0U) == 0x80U) --fin;
  return texte.substr(0, fin) + "…";
}

De deQui(std::string_view nom) { return nom == noms[0] ? De::vous : nom == noms[1] ? De::hermes : De::note; }

}  // namespace

void Memoire::ajouter(Propos propos) {
  propos.texte = borne(std::move(propos.texte));
  fil.push_back(std::move(propos));
  if (fil.size() > proposMax) fil.pop_front();
}

Memoire Memoire::lire(const std::filesystem::path& fichier) {
  Memoire memoire;
  const auto texte = lireFichier(fichier, fichierMax);
  const auto json = texte ? LectureJSON::objet(*texte) : std::nullopt;
  if (!json) return memoire;
  memoire.session = Champ::texte(*json, "session");
  memoire.enCours = Champ::texte(*json, "enCours");
  memoire.parti = Champ::booleen(*json, "parti", true);
  if (const Json* file = Champ::membre(*json, "enFile"); file && file->is_array())
    for (const Json& attendu : *file)
      if (attendu.is_string()) memoire.enFile.push_back(attendu.get<std::string>());
  if (const Json* fil = Champ::membre(*json, "fil"); fil && fil->is_array())
    for (const Json& propos : *fil)
      if (propos.is_object())
        memoire.ajouter({.de = deQui(Champ::texte(propos, "de")), .texte = Champ::texte(propos, "texte")});
  return memoire;
}

bool Memoire::ecrire(const std::filesystem::path& fichier) const {
  Json tout = {{"session", Texte::reparer(session)},
               {"enCours", Texte::reparer(enCours)},
               {"parti", parti},
               {"enFile", Json::array()},
               {"fil", Json::array()}};
  for (const std::string& texte : enFile) tout["enFile"].push_back(Texte::reparer(texte));
  for (const Propos& p : fil)
    tout["fil"].push_back({{"de", noms[static_cast<std::size_t>(p.de)]}, {"texte", Texte::reparer(p.texte)}});
  const auto ecrit = EcritureJSON::compacte(tout);
  return ecrit && creerDossierPrive(fichier.parent_path()) && ecrireFichierPrive(fichier, *ecrit);
}

bool Memoire::reserver(const std::filesystem::path& fichier, Prise prise) {
  creerDossierPrive(fichier.parent_path());
  const auto verrouiller = [&](const char* nom, int comment) {
    const int fd = ::open((fichier.string() + nom).c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    return fd >= 0 && ::flock(fd, comment) == 0;
  };
  if (prise == Prise::seule) return verrouiller(".verrou", LOCK_EX | LOCK_NB);
  return verrouiller(".verrou", LOCK_SH | LOCK_NB) && verrouiller(".tour", LOCK_EX);
}

std::filesystem::path Memoire::chemin(const std::filesystem::path& dossier, const std::string& lieu) {
  return dossier / (CarnetDeVol::nomSur(lieu) + ".json");
}

}  // namespace tarnavelle
