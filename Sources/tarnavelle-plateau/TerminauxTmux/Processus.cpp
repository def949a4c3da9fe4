#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <map>
#include <string_view>
#include <system_error>

#include "ProcessusInterne.hpp"
#include "Socle/Fichiers.hpp"
#include "Socle/Texte.hpp"

#if defined(__APPLE__)
#include <libproc.h>
#include <sys/event.h>
#include <sys/sysctl.h>
#else
#include <sys/syscall.h>
#endif

namespace tarnavelle::Plateau::Processus {
namespace {

struct Fiche {
  Un processus;
  pid_t session = 0;
  pid_t parent = 0;
};

#if defined(__APPLE__)

std::optional<Fiche> fiche(const kinfo_proc& p) {
  if (p.kp_proc.p_stat == SZOMB) return std::nullopt;
  const auto& t = p.kp_proc.p_starttime;
  const auto debut = static_cast<std::uint64_t>(t.tv_sec) * 1'000'000 + static_cast<std::uint64_t>(t.tv_usec);
  return Fiche{{p.kp_proc.p_pid, debut}, ::getsid(p.kp_proc.p_pid), p.kp_eproc.e_ppid};
}

/// The file that it runs; empty when the system does not say.
std::string programme(pid_t pid) {
  char chemin[PROC_PIDPATHINFO_MAXSIZE];
  const int octets = ::proc_pidpath(pid, chemin, sizeof chemin);
  return {chemin, static_cast<std::size_t>(std::max(octets, 0))};
}

std::vector<kinfo_proc> lire(int quoi, int lequel) {
  int nom[] = {CTL_KERN, KERN_PROC, quoi, lequel};
  std::size_t octets = 0;
  if (::sysctl(nom, 4, nullptr, &octets, nullptr, 0) != 0) return {};
  std::vector<kinfo_proc> lus(octets / sizeof(kinfo_proc) + 32);
  octets = lus.size() * sizeof(kinfo_proc);
  if (::sysctl(nom, 4, lus.data(), &octets, nullptr, 0) != 0) return {};
  lus.resize(octets / sizeof(kinfo_proc));
  return lus;
}

std::optional<Fiche> ficheDe(pid_t pid) {
  const auto lus = lire(KERN_PROC_PID, pid);
  return lus.empty() ? std::nullopt : fiche(lus.front());
}

/// Of most programs, the system shows nobody what they inherited.
bool porte(pid_t, const std::vector<std::string>&) { return false; }

template <class Voir>
void chaque(Voir voir) {
  for (const auto& p : lire(KERN_PROC_ALL, 0))
    if (const auto lue = fiche(p)) voir(*lue);
}

#else

/// A number, all of the text.
template <class Nombre>
std::optional<Nombre> nombre(std::string_view texte) {
  Nombre lu{};
  const auto fin = std::from_chars(texte.data(), texte.data() + texte.size(), lu);
  if (fin.ec != std::errc() || fin.ptr != texte.data() + texte.size()) return std::nullopt;
  return lu;
}

/// proc(5): the name, which may hold anything, ends with the last ")"; the state comes next.
std::optional<Fiche> ficheDe(pid_t pid) {
  const auto contenu = lireFichier("/proc/" + std::to_string(pid) + "/stat", 4096);
  if (!contenu || contenu->rfind(')') == std::string::npos) return std::nullopt;
  constexpr std::size_t etat = 0, pere = 1, session = 3, depart = 19;
  const auto champs = Texte::mots(std::string_view(*contenu).substr(contenu->rfind(')') + 1));
  if (champs.size() <= depart || champs[etat] == "Z" || champs[etat] == "X") return std::nullopt;
  const auto sid = nombre<pid_t>(champs[session]);
  const auto parent = nombre<pid_t>(champs[pere]);
  const auto debut = nombre<std::uint64_t>(champs[depart]);
  if (!sid || !parent || !debut) return std::nullopt;
  return Fiche{{pid, *debut}, *sid, *parent};
}

/// The file that it runs; empty when the system does not say.
std::string programme(pid_t pid) {
  std::error_code erreur;
  std::string fichier = std::filesystem::read_symlink("/proc/" + std::to_string(pid) + "/exe", erreur).string();
  constexpr std::string_view remplace = " (deleted)";  // proc(5): a newer one was installed since
  if (fichier.ends_with(remplace)) fichier.resize(fichier.size() - remplace.size());
  return fichier;
}

/// Whether what it began with holds one of these, "NAME=value".
bool porte(pid_t pid, const std::vector<std::string>& marques) {
  constexpr std::size_t environnementMax = std::size_t{1} << 22;
  const auto lu = lireFichier("/proc/" + std::to_string(pid) + "/environ", environnementMax);
  return lu && std::ranges::any_of(marques, [entoure = '\0' + *lu](const std::string& marque) {
           return entoure.find('\0' + marque + '\0') != std::string::npos;
         });
}

template <class Voir>
void chaque(Voir voir) {
  std::error_code erreur;
  for (std::filesystem::directory_iterator entree("/proc", erreur), fin; !erreur && entree != fin;
       entree.increment(erreur)) {
    const auto pid = nombre<pid_t>(entree->path().filename().native());
    if (const auto lue = pid ? ficheDe(*pid) : std::nullopt) voir(*lue);
  }
}

#endif

}  // namespace

std::optional<std::uint64_t> debut(pid_t pid) {
  const auto lue = pid > 0 ? ficheDe(pid) : std::nullopt;
  if (!lue) return std::nullopt;
  return lue->processus.debut;
}

std::vector<Un> deLaSuite(const std::vector<pid_t>& meneurs, const std::vector<Un>& connus) {
  std::vector<Un> suite;
  std::map<pid_t, Fiche> autres, pris;
  chaque([&](const Fiche& lue) {
    const bool notre =
        std::ranges::count(meneurs, lue.session) > 0 || std::ranges::count(connus, lue.processus) > 0;
    (notre ? pris : autres).emplace(lue.processus.pid, lue);
  });
  for (bool encore = !pris.empty(); encore;) {
    encore = false;
    for (auto fils = autres.begin(); fils != autres.end();) {
      const auto pere = pris.find(fils->second.parent);
      const bool ailleurs = pere != pris.end() && pere->second.session != fils->second.session;
      // Of one that is ending just now the system no longer says what it ran: nothing is proven against its
      // child.
      const std::string sien = ailleurs ? programme(pere->first) : "";
      const bool demon = ailleurs && (sien.empty() || sien == programme(fils->first));
      if (pere == pris.end() || demon) {
        ++fils;
      } else {
        encore = true;
        pris.insert(autres.extract(fils++));
      }
    }
  }
  for (const auto& [pid, lue] : pris) suite.push_back(lue.processus);
  return suite;
}

std::vector<Un> portant(const std::vector<std::string>& marques, const std::vector<std::string>& demons) {
  std::map<pid_t, Fiche> tous;
  if (!marques.empty()) chaque([&](const Fiche& lue) { tous.emplace(lue.processus.pid, lue); });
  const auto nom = [](pid_t pid) { return std::filesystem::path(programme(pid)).filename().string(); };
  const auto demon = [&](const Fiche& f) {
    return f.session == f.processus.pid && std::ranges::count(demons, nom(f.processus.pid)) > 0;
  };
  std::vector<Un> portants;
  for (const auto& [pid, lue] : tous) {
    if (pid == ::getpid() || !porte(pid, marques)) continue;
    auto aine = tous.find(pid);
    // Read one by one, they may tell of a parent whose number has passed to a child: a circle.
    for (std::size_t pas = 0; pas < tous.size() && aine != tous.end() && !demon(aine->second); ++pas)
      aine = tous.find(aine->second.parent);
    if (aine == tous.end() || !demon(aine->second)) portants.push_back(lue.processus);
  }
  return portants;
}

std::string enMots(const Un& processus) {
  const auto nom = std::filesystem::path(programme(processus.pid)).filename().string();
  return (nom.empty() ? "" : nom + ", ") + "processus " + std::to_string(processus.pid);
}

int guetDeFin(pid_t pid) {
#if defined(__APPLE__)
  const int file = ::kqueue();
  struct kevent fin;
  EV_SET(&fin, pid, EVFILT_PROC, EV_ADD, NOTE_EXIT, 0, nullptr);
  if (file >= 0 && ::kevent(file, &fin, 1, nullptr, 0, nullptr) == 0) return file;
  if (file >= 0) ::close(file);
  return -1;
#else
  return static_cast<int>(::syscall(SYS_pidfd_open, pid, 0));
#endif
}

void signaler(const Un& processus, int signal) {
  if (debut(processus.pid) == processus.debut) ::kill(processus.pid, signal);
}

std::string demarrage() {
#if defined(__APPLE__)
  char texte[64] = {};
  std::size_t octets = sizeof texte - 1;
  if (::sysctlbyname("kern.bootsessionuuid", texte, &octets, nullptr, 0) != 0) return {};
  return texte;
#else
  const auto lu = lireFichier("/proc/sys/kernel/random/boot_id", 64);
  return std::string(Texte::rogner(lu.value_or("")));
#endif
}

}  // namespace tarnavelle::Plateau::Processus
