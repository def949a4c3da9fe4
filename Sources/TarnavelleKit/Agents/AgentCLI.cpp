#include "Agents/AgentCLI.hpp"

#include <algorithm>
#include <utility>

#include "Socle/Fichiers.hpp"
#include "Socle/Texte.hpp"
#include "TableAgentsInterne.hpp"

namespace tarnavelle {
namespace {

constexpr std::string_view commeEspaces[] = {"’", "'", "-", "_"};
constexpr std::string_view omis[] = {"?", "!", ".", ",", ";", ":", "«", "»", "\""};

/// An entry that is known to stand in the table.
const AgentCLI& entree(std::string_view id) { return *AgentCLI::parId(id); }

bool parmi(const auto& caracteres, std::string_view caractere) {
  return std::ranges::find(caracteres, caractere) != std::end(caracteres);
}

/// The entry that a folded phrase names.
const AgentCLI* designe(std::string_view plie) {
  const std::string espacee = " " + std::string(plie) + " ";
  const AgentCLI* meilleur = nullptr;
  std::size_t longueur = 0;
  for (const AgentCLI& cli : AgentCLI::tous())
    for (const std::string& alias : cli.alias) {
      const std::string cherche = AgentCLI::plier(alias);
      const std::size_t n = Texte::caracteres(cherche);
      if (n <= longueur || espacee.find(" " + cherche + " ") == std::string::npos) continue;
      meilleur = &cli;
      longueur = n;
    }
  return meilleur;
}

}  // namespace

const AgentCLI& AgentCLI::claude() { return entree("claude"); }
const AgentCLI& AgentCLI::codex() { return entree("codex"); }
const AgentCLI& AgentCLI::grok() { return entree("grok"); }
const AgentCLI& AgentCLI::gemini() { return entree("gemini"); }
const AgentCLI& AgentCLI::hermes() { return entree("hermes"); }

const std::vector<AgentCLI>& AgentCLI::tous() {
  static const std::vector<AgentCLI> catalogue = [] {
    std::vector<AgentCLI> entrees;
    for (const auto& ligne : interne::tableAgents())
      if (ligne.cli) entrees.push_back(*ligne.cli);
    return entrees;
  }();
  return catalogue;
}

const AgentCLI* AgentCLI::parId(std::string_view id) {
  const auto trouvee = std::ranges::find(tous(), id, &AgentCLI::id);
  return trouvee == tous().end() ? nullptr : &*trouvee;
}

const AgentCLI* AgentCLI::depuisPhrase(std::string_view phrase) {
  const std::string plie = plier(phrase);
  const AgentCLI* cli = designe(plie);
  // Other signs may stand around the name: “claude”, (codex), grok…
  return cli ? cli : designe(Texte::joindre(Texte::suitesDeLettres(plie), " "));
}

std::string AgentCLI::plier(std::string_view texte) {
  const std::string sansAccents = Texte::sansAccents(Texte::minuscules(texte));
  std::string resultat;
  for (std::string_view reste = sansAccents; !reste.empty();) {
    const auto n = std::max<std::size_t>(1, Texte::longueurSequence(reste));
    const auto caractere = reste.substr(0, n);
    reste.remove_prefix(n);
    if (parmi(commeEspaces, caractere))
      resultat += ' ';
    else if (!parmi(omis, caractere))
      resultat += caractere;
  }
  return Texte::joindre(Texte::mots(resultat), " ");
}

std::string AgentCLI::sousTitrePalette() const { return "Terminal · " + editeur; }

const AgentCLI::Machine& AgentCLI::Machine::reelle() {
  static const Machine machine{tarnavelle::dossierPersonnel(Variables::duProcessus()).string(),
                               fichierExecutable};
  return machine;
}

std::optional<std::filesystem::path> AgentCLI::binaire(const Machine& machine) const {
  for (const std::string& candidat : cheminsBinaires) {
    std::filesystem::path chemin =
        candidat.starts_with('~') ? machine.dossierPersonnel + candidat.substr(1) : candidat;
    if (machine.estExecutable(chemin)) return chemin;
  }
  return std::nullopt;
}

bool AgentCLI::disponibleSansCache(const Machine& machine) const { return binaire(machine).has_value(); }

bool AgentCLI::disponible() const { return CacheDisponibiliteCLI::partage().valeur(*this); }

CacheDisponibiliteCLI& CacheDisponibiliteCLI::partage() {
  static CacheDisponibiliteCLI cache([](const AgentCLI& cli) { return cli.disponibleSansCache(); },
                                     std::chrono::steady_clock::now);
  return cache;
}

CacheDisponibiliteCLI::CacheDisponibiliteCLI(Sonde sonde, Horloge horloge)
    : sonde_(std::move(sonde)), horloge_(std::move(horloge)) {}

bool CacheDisponibiliteCLI::valeur(const AgentCLI& pour) {
  const Instant maintenant = horloge_();
  {
    const std::lock_guard verrou(lock_);
    if (const auto vue = vues_.find(pour.id); vue != vues_.end() && maintenant - vue->second.quand < ttl)
      return vue->second.valeur;
  }
  const bool valeur = sonde_(pour);
  const Instant obtenue = horloge_();
  const std::lock_guard verrou(lock_);
  vues_.insert_or_assign(pour.id, Vue{valeur, obtenue});
  return valeur;
}

void CacheDisponibiliteCLI::oublier(const AgentCLI& cli) {
  const std::lock_guard verrou(lock_);
  vues_.erase(cli.id);
}

void CacheDisponibiliteCLI::oublier() {
  const std::lock_guard verrou(lock_);
  vues_.clear();
}

}  // namespace tarnavelle

std::size_t std::hash<tarnavelle::AgentCLI>::operator()(const tarnavelle::AgentCLI& cli) const noexcept {
  std::size_t graine = static_cast<std::size_t>(cli.teinte);
  const auto meler = [&graine](std::size_t valeur) {
    graine ^= valeur + 0x9e3779b9 + (graine << 6) + (graine >> 2);
  };
  for (const auto* texte : {&cli.id, &cli.titre, &cli.editeur, &cli.symbole, &cli.prefixeSession})
    meler(std::hash<std::string>{}(*texte));
  for (const auto* liste : {&cli.cheminsBinaires, &cli.arguments, &cli.alias}) {
    meler(liste->size());
    for (const std::string& texte : *liste) meler(std::hash<std::string>{}(texte));
  }
  return graine;
}
