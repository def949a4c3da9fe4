#include "Agents/CrochetAgent.hpp"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <optional>
#include <utility>

#include "Socle/EcritureJSON.hpp"
#include "Socle/LectureIndulgente.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::CrochetAgent {
namespace {

constexpr std::size_t nomMax = 100;

/// A member that is kept, and the most bytes of its text.
constexpr std::array<std::pair<std::string_view, std::size_t>, 14> membres = {{
    {"hook_event_name", nomMax},
    {"last_assistant_message", 32768},
    {"message", 1024},
    {"notification_type", 100},
    {"prompt", 8192},
    {"prompt_id", 200},
    {"prompt_response", 32768},
    {"reason", 200},
    {"session_id", 200},
    {"source", 100},
    {"tool_input", 0},
    {"tool_name", 200},
    {"transcript_path", 4096},
    {"turn_id", 200},
}};
static_assert(std::ranges::is_sorted(membres));

/// The same of a tool's input.
constexpr std::array<std::string_view, 7> entreeOutil = {"command", "description", "file_path", "path",
                                                         "pattern", "query",       "url"};
constexpr std::size_t texteOutilMax = 1024;

constexpr auto cles = [] {
  std::array<std::string_view, membres.size()> noms;
  std::ranges::transform(membres, noms.begin(), [](const auto& membre) { return membre.first; });
  return noms;
}();

/// At most that many bytes, cut between two characters.
std::string couper(std::string_view texte, std::size_t octets) {
  if (texte.size() <= octets) return std::string(texte);
  while (octets > 0 && (static_cast<unsigned char>(texte[octets]) & 0xC0U) == 0x80U) --octets;
  return std::string(texte.substr(0, octets)) + "…";
}

Json resumerOutil(const Json& entree) {
  Json resume = Json::object();
  for (const auto cle : entreeOutil)
    if (const std::string* texte = Champ::chaine(entree, cle))
      resume[std::string(cle)] = couper(*texte, texteOutilMax);
  return resume;
}

}  // namespace

std::string entree(int descripteur) {
  std::string lus;
  if (::isatty(descripteur) == 1) return lus;
  std::array<char, 65536> bloc;
  const auto fin = std::chrono::steady_clock::now() + patience;
  while (lus.size() < entreeMax) {
    const auto reste = std::chrono::ceil<std::chrono::milliseconds>(fin - std::chrono::steady_clock::now());
    pollfd attendu{descripteur, POLLIN, 0};
    const int pret = ::poll(&attendu, 1, static_cast<int>(std::max<std::int64_t>(reste.count(), 0)));
    if (pret < 0 && errno == EINTR) continue;
    if (pret <= 0) break;
    const auto n = ::read(descripteur, bloc.data(), std::min(bloc.size(), entreeMax - lus.size()));
    if (n < 0 && (errno == EINTR || errno == EAGAIN)) continue;
    if (n <= 0) break;
    lus.append(bloc.data(), static_cast<std::size_t>(n));
  }
  return lus;
}

std::string ligne(const Appel& appel) {
  Json garde = Json::object();
  const std::string repare = Texte::utf8Valide(appel.dit) ? "" : Texte::reparer(appel.dit);
  const auto objet =
      LectureIndulgente::objet(repare.empty() ? appel.dit : repare, {.cles = cles, .enTeteSeulement = true});
  if (objet) {
    for (const auto& [cle, octets] : membres) {
      const Json* membre = Champ::membre(*objet, cle);
      if (!membre) continue;
      if (membre->is_string()) garde[std::string(cle)] = couper(*Champ::chaine(*objet, cle), octets);
      if (membre->is_object() && cle == "tool_input") garde[std::string(cle)] = resumerOutil(*membre);
    }
  }
  if (!garde.contains("hook_event_name"))
    garde["hook_event_name"] = couper(Texte::reparer(appel.evenement), nomMax);
  garde["programme"] = couper(Texte::reparer(appel.programme), nomMax);
  garde["quand"] = appel.quand.count();
  return EcritureJSON::compacte(garde).value_or("{}") + "\n";
}

bool ajouter(const std::filesystem::path& journal, std::string_view ligne) {
  const int fd =
      ::open(journal.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC,
             S_IRUSR | S_IWUSR);
  if (fd < 0) return false;
  struct stat etat {};
  const bool sain = ::fstat(fd, &etat) == 0 && S_ISREG(etat.st_mode) && etat.st_uid == ::geteuid() &&
                    static_cast<std::uint64_t>(etat.st_size) < journalMax;
  ssize_t ecrits = -1;
  if (sain) do
      ecrits = ::write(fd, ligne.data(), ligne.size());
    while (ecrits < 0 && errno == EINTR);
  ::close(fd);
  return ecrits == static_cast<ssize_t>(ligne.size());
}

}  // namespace tarnavelle::CrochetAgent
