#include "Completions.hpp"

#include <algorithm>
#include <cctype>
#include <nlohmann/json.hpp>
#include <set>
#include <string_view>

#include "Appel/AppelPorte.hpp"
#include "Catalogue.hpp"
#include "LigneCommande.hpp"
#include "Porte/CommandeControle.hpp"
#include "Porte/PorteControle.hpp"
#include "ScriptsCompletion.hpp"
#include "Socle/Inoffensif.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Completions {
namespace {

using Genre = ParamVoix::Genre;

/// Whoever presses the key waits: a door on this machine answers in a millisecond.
constexpr std::chrono::milliseconds patience{400};
constexpr std::size_t nomsMax = 200;
constexpr std::size_t descriptionMax = 70;

std::vector<Candidat> commandes() {
  std::vector<Candidat> liste;
  for (const std::string& nom : nomsDesCommandes())
    liste.push_back({nom, std::string(enBref(*commande(nom).outil))});
  return liste;
}

/// A name that no shell reads anything into but its spaces, and no terminal either: names come from the
/// door.
bool docile(std::string_view nom) {
  if (nom.empty() || nom.starts_with('-') || Inoffensif::montrable(nom) != nom) return false;
  return std::ranges::all_of(nom, [](unsigned char c) {
    return c >= 0x80 || std::isalnum(c) ||
           std::string_view(" _.,+@-").find(static_cast<char>(c)) != std::string_view::npos;
  });
}

/// The words before the cursor: the command, what is given already, and what the cursor is the value of.
class Contexte {
 public:
  explicit Contexte(const std::vector<std::string>& mots) {
    for (std::size_t i = 0; i + 1 < mots.size(); ++i) lire(mots[i]);
  }

  std::vector<Candidat> candidats(std::string_view courant,
                                  const std::function<std::vector<std::string>()>& agents) const {
    if (attendue_) return valeurs(*attendue_, "", agents);
    if (!finies_ && courant.starts_with("--") && courant.find('=') != courant.npos) {
      const ParamVoix* p = parametre(courant.substr(2, courant.find('=') - 2));
      return p ? valeurs(*p, commeOption(*p) + "=", agents) : std::vector<Candidat>{};
    }
    if (!finies_ && courant.starts_with('-')) return options();
    if (!nommee_) return commandes();
    return mot(agents);
  }

 private:
  const ParamVoix* parametre(std::string_view nom) const {
    if (!commande_.outil) return nullptr;
    for (const ParamVoix& p : commande_.outil->parametres)
      if (p.estNomme(nom)) return &p;
    return nullptr;
  }

  void lire(const std::string& mot) {
    if (attendue_) {
      attendue_ = nullptr;
    } else if (!finies_ && mot == "--") {
      finies_ = true;
    } else if (!finies_ && mot.starts_with("--")) {
      const auto egal = mot.find('=');
      const ParamVoix* p = parametre(std::string_view(mot).substr(2, egal == mot.npos ? egal : egal - 2));
      if (!p) return;
      donnes_.insert(p);
      if (const OutilVoix* service = precision(*commande_.outil, p->nom)) commande_.outil = service;
      if (p->genre == Genre::texte && egal == mot.npos) attendue_ = p;
    } else if (!nommee_ && !finies_ && mot.starts_with('-')) {
      return;
    } else if (!nommee_) {
      nommee_ = true;
      commande_ = commande(mot);
    } else {
      ++mots_;
    }
  }

  std::vector<Candidat> options() const {
    std::vector<Candidat> liste;
    if (commande_.outil)
      for (const ParamVoix& p : commande_.outil->parametres)
        if (!donnes_.contains(&p)) liste.push_back({commeOption(p), p.description});
    for (const ParamVoix& p : parametresCommuns(commande_.outil))
      liste.push_back({commeOption(p), p.description});
    return liste;
  }

  /// The next word fills the next open parameter.
  std::vector<Candidat> mot(const std::function<std::vector<std::string>()>& agents) const {
    if (!commande_.outil) return {};
    std::size_t rang = mots_;
    for (const ParamVoix* p : commande_.outil->textes())
      if (!donnes_.contains(p) && rang-- == 0) return valeurs(*p, "", agents);
    return {};
  }

  std::vector<Candidat> valeurs(const ParamVoix& p, const std::string& prefixe,
                                const std::function<std::vector<std::string>()>& agents) const {
    std::vector<Candidat> liste;
    const Choix choix = commande_.locale ? commande_.locale->choix : Choix::libre;
    if (p.genre == Genre::booleen) {
      for (const char* valeur : {"true", "false"}) liste.push_back({prefixe + valeur, p.description});
    } else if (designe(*commande_.outil, p) == Designe::agent) {
      for (const std::string& nom : agents()) liste.push_back({prefixe + nom, "agent"});
    } else if (choix == Choix::commande) {
      liste = commandes();
    } else if (choix == Choix::hermes && p.nom == "quoi") {
      for (const char* quoi : {"regler", "ecouter", "parler"}) liste.push_back({quoi, ""});
    } else if (choix == Choix::shell) {
      for (const ScriptCompletion& script : scriptsCompletion())
        liste.push_back({std::string(script.shell), ""});
    }
    return liste;
  }

  bool nommee_ = false;
  bool finies_ = false;  ///< "--" has been seen
  CommandeNommee commande_;
  const ParamVoix* attendue_ = nullptr;  ///< the option whose value is to come
  std::set<const ParamVoix*> donnes_;
  std::size_t mots_ = 0;
};

/// bash gives "--agent=x" as three words: puts them together again, and tells whether the last word was.
bool recoller(std::vector<std::string>& mots) {
  std::vector<std::string> entiers;
  bool colle = false, suite = false;  // the last word was put to another; the next one will be
  for (std::string& mot : mots) {
    const bool egal = mot == "=" && !entiers.empty() && entiers.back().starts_with("--") &&
                      entiers.back().find('=') == std::string::npos;
    colle = egal || suite;
    if (colle)
      entiers.back() += mot;
    else
      entiers.push_back(std::move(mot));
    suite = egal;
  }
  mots = std::move(entiers);
  return colle;
}

/// The names of the records in the lists of the board's state; none when the door does not say at once.
std::vector<std::string> agentsDeLaPorte(const Session& session) {
  const auto porte = PorteControle::resoudrePorte(session.environnement);
  if (!porte) return {};
  AppelPorte appel({.attente = patience, .vie = patience, .corpsMax = 1024 * 1024});
  const auto coffre = appel.posterPorte(CommandeControle::chargeGenerique("etat", {}), *porte);
  const auto reponse = LectureJSON::objet(coffre.data.value_or(""));
  std::vector<std::string> noms;
  if (const Json* donnees = reponse ? Champ::membre(*reponse, "data") : nullptr;
      donnees && donnees->is_object())
    for (const Json& liste : *donnees)
      if (liste.is_array())
        for (const Json& fiche : liste)
          if (std::string nom = Champ::texte(fiche, "nom"); docile(nom) && noms.size() < nomsMax)
            noms.push_back(std::move(nom));
  return noms;
}

}  // namespace

std::optional<std::vector<std::string>> motsACompleter(const std::vector<std::string>& mots) {
  if (mots.size() < 2 || mots[0] != "completions" || mots[1] != "proposer") return std::nullopt;
  return std::vector<std::string>(mots.begin() + 2, mots.end());
}

std::vector<Candidat> candidats(std::vector<std::string> mots,
                                const std::function<std::vector<std::string>()>& agents) {
  const bool valeurSeule = recoller(mots);
  auto liste = Contexte(mots).candidats(mots.empty() ? "" : mots.back(), agents);
  if (valeurSeule)
    for (Candidat& c : liste) c.mot.erase(0, c.mot.find('=') + 1);
  return liste;
}

int proposer(const std::vector<std::string>& mots, Session& session) {
  std::string lignes;
  for (const Candidat& c : candidats(mots, [&session] { return agentsDeLaPorte(session); }))
    lignes.append(c.mot).append("\t").append(Texte::tronquer(c.description, descriptionMax)).append("\n");
  session.sortie.rendre(lignes);
  return Statut::fait;
}

}  // namespace tarnavelle::Completions
