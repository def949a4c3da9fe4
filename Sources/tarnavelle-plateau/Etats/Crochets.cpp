// Reading what hooks appended.
#include "Etats/Crochets.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <utility>

#include "Socle/Fichiers.hpp"
#include "Socle/LignesJSON.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Plateau {
namespace {

using Genre = Crochet::Genre;

/// Every program's names: those of the same name mean the same.
constexpr std::array<std::pair<std::string_view, Genre>, 26> genres = {{
    {"SessionStart", Genre::demarre},
    {"UserPromptSubmit", Genre::consigne},
    {"BeforeAgent", Genre::consigne},
    {"PreToolUse", Genre::outil},
    {"BeforeTool", Genre::outil},
    {"PostToolUse", Genre::outilFini},
    {"PostToolUseFailure", Genre::outilFini},
    {"AfterTool", Genre::outilFini},
    {"PermissionRequest", Genre::permission},
    {"Notification", Genre::attention},
    {"Stop", Genre::fini},
    {"AfterAgent", Genre::fini},
    {"StopFailure", Genre::echec},
    {"Interrupt", Genre::interrompu},
    {"SessionEnd", Genre::sorti},
    {"PermissionDenied", Genre::autre},
    {"SubagentStop", Genre::autre},
    {"chat.message", Genre::consigne},
    {"tool.execute.before", Genre::outil},
    {"tool.execute.after", Genre::outilFini},
    {"permission.asked", Genre::permission},
    {"permission.replied", Genre::outil},
    {"session.idle", Genre::fini},
    {"tarnavelle.lien.rompu", Genre::rompu},  // from here on, of whoever joins another machine
    {"tarnavelle.lien.renoue", Genre::renoue},
    {"tarnavelle.carnet.perdu", Genre::perdu},
}};

constexpr std::size_t texteMax = 500;  // characters

Genre genreDe(std::string_view nom, const Json& objet) {
  const auto rangee = std::ranges::find(genres, nom, &std::pair<std::string_view, Genre>::first);
  if (rangee == genres.end()) return Genre::autre;
  // A record that is made shorter begins anew in the midst of a turn.
  if (rangee->second == Genre::demarre && Champ::texte(objet, "source") == "compact") return Genre::autre;
  // Another conversation begins at once.
  if (rangee->second == Genre::sorti && Champ::texte(objet, "reason") == "clear") return Genre::autre;
  // gemini asks for leave by this one.
  if (rangee->second == Genre::attention && Champ::texte(objet, "notification_type") == "ToolPermission")
    return Genre::permission;
  return rangee->second;
}

std::string premier(const Json& objet, std::initializer_list<std::string_view> cles) {
  for (const auto cle : cles)
    if (const std::string* texte = Champ::chaine(objet, cle); texte && !texte->empty()) return *texte;
  return {};
}

}  // namespace

std::vector<Crochet> Crochets::decoder(std::string_view ligne) {
  std::vector<Crochet> crochets;
  LignesJSON::objets(ligne, {}, [&](const Json& objet) {
    const std::string* nom = Champ::chaine(objet, "hook_event_name");
    if (!nom) return;
    crochets.push_back(
        {.genre = genreDe(*nom, objet),
         .nom = std::string(Texte::premiers(*nom, 100)),
         .conversation = Champ::texte(objet, "session_id"),
         .tour = premier(objet, {"prompt_id", "turn_id"}),
         .texte = Texte::tronquer(
             Texte::rogner(premier(objet, {"prompt", "last_assistant_message", "tool_name", "message"})),
             texteMax),
         .transcript = Champ::texte(objet, "transcript_path"),
         .reponse = std::string(Texte::rogner(premier(objet, {"last_assistant_message", "prompt_response"})))});
  });
  return crochets;
}

namespace {

/// What stands in a file from there on; `curseur` moves behind its last whole line.
void lireDepuis(const std::filesystem::path& fichier, std::int64_t& curseur, std::size_t tailleTranche,
                std::vector<Crochet>& crochets) {
  const int fd = ::open(fichier.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
  if (fd < 0) return;
  struct stat etat {};
  if (::fstat(fd, &etat) == 0 && S_ISREG(etat.st_mode)) {
    if (etat.st_size < curseur) curseur = 0;
    std::string tranche(static_cast<std::size_t>(std::clamp<std::int64_t>(
                            etat.st_size - curseur, 0, static_cast<std::int64_t>(tailleTranche))),
                        '\0');
    while (curseur < etat.st_size) {
      const auto lus = ::pread(fd, tranche.data(), tranche.size(), curseur);
      if (lus < 0 && errno == EINTR) continue;
      if (lus <= 0) break;
      const auto octets = static_cast<std::size_t>(lus);
      auto consommes =
          LignesJSON::parcourir(std::string_view(tranche).substr(0, octets), [&](std::string_view ligne) {
            for (Crochet& crochet : Crochets::decoder(ligne)) crochets.push_back(std::move(crochet));
          });
      if (consommes == 0 && octets < tailleTranche) break;  // the line is still being written
      curseur += static_cast<std::int64_t>(consommes == 0 ? octets : consommes);
    }
  }
  ::close(fd);
}

}  // namespace

bool JournalCrochets::commencer(const std::filesystem::path& fichier) {
  retirer(fichier);
  return ecrireFichierPrive(fichier, "", Duree::passagere);
}

void JournalCrochets::retirer(const std::filesystem::path& fichier) {
  ::unlink(ancien(fichier).c_str());
  ::unlink(fichier.c_str());
}

std::vector<Crochet> JournalCrochets::lire() {
  std::vector<Crochet> crochets;
  lireDepuis(ancien(fichier_), curseurAncien_, tailleTranche, crochets);
  lireDepuis(fichier_, curseur_, tailleTranche, crochets);
  if (curseur_ > longueurMax && ::rename(fichier_.c_str(), ancien(fichier_).c_str()) == 0)
    curseurAncien_ = std::exchange(curseur_, 0);
  return crochets;
}

}  // namespace tarnavelle::Plateau
