#include "Accueil/Service.hpp"

#include <array>
#include <cstdio>

#include "Socle/Texte.hpp"

namespace tarnavelle::Plateau::Service {
namespace {

/// A word of a unit's line: in quotes, its specifiers doubled; of a command line, its variables too.
std::string mot(const std::string& texte, bool deCommande) {
  std::string ecrit = "\"";
  for (const char c : texte) {
    if (c == '"' || c == '\\') ecrit += '\\';
    if (c == '%' || (c == '$' && deCommande)) ecrit += c;
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) {
      std::array<char, 5> code{};
      std::snprintf(code.data(), code.size(), "\\x%02x", static_cast<unsigned>(c));
      ecrit += code.data();
    } else {
      ecrit += c;
    }
  }
  return ecrit + '"';
}

/// A text of a property list. Controls, which XML has not, are left out, as are bytes that are no text.
std::string chaine(const std::string& texte) {
  std::string ecrite = "<string>";
  for (const char c : Texte::reparer(texte)) {
    if (c == '&')
      ecrite += "&amp;";
    else if (c == '<')
      ecrite += "&lt;";
    else if (c == '>')
      ecrite += "&gt;";
    else if (static_cast<unsigned char>(c) >= 0x20)
      ecrite += c;
  }
  return ecrite + "</string>";
}

}  // namespace

std::string systemd(const Demande& d) {
  const std::string ligne = Texte::joindre(d.mots, " ", [](const std::string& m) { return mot(m, true); });
  return "[Unit]\nDescription=" + d.titre +
         "\n"
         "StartLimitIntervalSec=60\n"
         "StartLimitBurst=5\n\n"
         "[Service]\nType=exec\nExecStart=" +
         ligne + "\nEnvironment=" + mot("PATH=" + d.chemins, false) +
         "\n"
         "# The agents go on without the door, and are found again by the next one.\n"
         "KillMode=process\n"
         "Restart=on-failure\nRestartSec=2\n\n"
         "[Install]\nWantedBy=default.target\n";
}

std::string launchd(const Demande& d) {
  std::string mots;
  for (const std::string& m : d.mots) mots += "    " + chaine(m) + "\n";
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
         "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
         "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
         "<plist version=\"1.0\">\n<dict>\n"
         "  <key>Label</key>\n  " +
         chaine(d.nom) + "\n  <key>ProgramArguments</key>\n  <array>\n" + mots +
         "  </array>\n"
         "  <key>EnvironmentVariables</key>\n  <dict>\n    <key>PATH</key>\n    " +
         chaine(d.chemins) +
         "\n  </dict>\n"
         "  <key>WorkingDirectory</key>\n  " +
         chaine(d.personnel) + "\n  <key>StandardErrorPath</key>\n  " +
         chaine(d.personnel + "/Library/Logs/" + d.nom + ".log") +
         "\n"
         "  <key>RunAtLoad</key>\n  <true/>\n"
         "  <key>KeepAlive</key>\n  <dict>\n    <key>SuccessfulExit</key>\n    <false/>\n  </dict>\n"
         "  <!-- The agents go on without the door, and are found again by the next one. -->\n"
         "  <key>AbandonProcessGroup</key>\n  <true/>\n"
         "</dict>\n</plist>\n";
}

}  // namespace tarnavelle::Plateau::Service
