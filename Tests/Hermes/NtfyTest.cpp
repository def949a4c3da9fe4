#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "Hermes/AbonnementNtfy.hpp"
#include "Hermes/Dire.hpp"
#include "Hermes/JournalIdsNtfy.hpp"
#include "Hermes/MessageNtfy.hpp"
#include "Hermes/ReglageNtfy.hpp"

namespace tarnavelle {
namespace {

using namespace std::chrono_literals;

const std::string topic22 = "abcdefghijklmnopqrst-_";

TEST(ReglageNtfy, RefusDansLeurOrdreEtURLDuFlux) {
  const std::string e21 = std::string(20, 'a') + "e\u0301";  // 21 characters in 23 bytes
  const std::string admis = "Le topic ntfy n'admet que des lettres, des chiffres, « - » et « _ ».";
  const std::string illisible = "Le serveur ntfy n'est pas une adresse lisible.";
  const std::string enClair =
      "Le serveur ntfy doit être en https:// (http:// n'est toléré que sur la machine même).";
  const std::tuple<std::string, std::string, std::string> cas[] = {
      // the refusal, or the stream's root
      {"nonsense", "", "Aucun topic ntfy n'est réglé : l'oreille reste fermée."},
      {"https://h", e21,
       "Le topic ntfy fait 21 caractères ; il en faut au moins 22 — c'est un mot de passe, pas un nom."},
      {"nonsense", e21 + "a", admis},
      {"https://h", topic22 + "\n", admis},
      {"nonsense", topic22, illisible},
      {"https:///chemin", topic22, illisible},
      {"https://h:99999", topic22, illisible},
      {"ftp://h", topic22, enClair},
      {"HTTPS://h", topic22, enClair},
      {"http://192.168.1.2", topic22, enClair},
      {"http://127.0.0.1:8080", topic22, "http://127.0.0.1:8080"},
      {"http://LOCALHOST", topic22, "http://LOCALHOST"},
      {"https://10.0.0.1.nip.io:8080", topic22, "https://10.0.0.1.nip.io:8080"},
      {"https://10.0.0.1:x", topic22, illisible},
      {"http://10.0.0.1.nip.io", topic22, enClair},
      {"http://[::1]:80/x", topic22, "http://[::1]:80/x"},
      {" \thttps://h.example/ntfy/// ", topic22, "https://h.example/ntfy"},
      {"https://h//", "\u00A0" + topic22 + " ", "https://h"},
      {ReglageNtfy{}.serveur, topic22, "https://ntfy.sh"},
  };
  for (const auto& [serveur, topic, attendu] : cas) {
    const ReglageNtfy reglage{serveur, topic, "jeton"};
    const auto suffixe = attendu.starts_with("http") ? "/" + topic22 + "/sse" : "";
    EXPECT_EQ(reglage.refus().value_or(reglage.urlFlux().value_or("")), attendu + suffixe) << topic;
  }
  EXPECT_EQ((ReglageNtfy{"", " " + topic22 + "yz "}.topicMasque()), "abcd…(24)");
  EXPECT_EQ((ReglageNtfy{"", topic22.substr(1)}.topicMasque()), "…(21)");
}

TEST(MessageNtfy, Lire) {
  const struct {
    std::string ligne;
    std::string attendu;
    std::optional<std::string> topic = {};
  } cas[] = {
      {R"({"event":"message","id":"x","message":"m","time":1700000000})", "x|1700000000000||∅|m"},
      {R"({"event":"message","id":"x","message":"m","title":"t","topic":"a","time":1.5})", "x|1500|a|t|m", "a"},
      {R"({"event":"message","id":"x","title":"T"})", "x|0||T|T"},
      {R"({"event":"message","id":"x","title":"","message":"m","time":"7"})", "x|0||∅|m"},
      {R"({"event":"message","id":"x","message":"m","time":1e300})", "x|9223372036854775807||∅|m"},
      {R"({"event":"message","id":"x","message":" ","topic":7})", "x|0||∅| ", ""},
      {R"({"event":"message","id":"","message":"m"})", "rien"},
      {R"({"event":"message","id":7,"message":"m"})", "rien"},
      {R"({"event":"message_delete","id":"x","message":"m"})", "rien"},
      {R"({"event":"open","topic":"mine"})", "vivant", "mine"},
      {R"({"event":"keepalive","topic":"other"})", "rien", "mine"},
      {R"({"event":"open")", "rien"},
  };
  const auto dire = [](const LectureNtfy& lecture) -> std::string {
    if (const auto* lu = std::get_if<LectureNtfy::message>(&lecture.cas)) {
      const MessageNtfy& m = lu->message;
      return essai::joindre(m.id, essai::dire(m.date), m.topic, m.titre.value_or("∅"), m.texte);
    }
    return std::holds_alternative<LectureNtfy::vivant>(lecture.cas) ? "vivant" : "rien";
  };
  for (const auto& c : cas) EXPECT_EQ(dire(MessageNtfy::lire(c.ligne, c.topic)), c.attendu) << c.ligne;
}

TEST(AbonnementNtfy, Requete) {
  RequeteHTTP attendue{.methode = "GET",
                       .url = "https://h/" + topic22 + "/sse",
                       .entetes = {{"Accept", "text/event-stream"}, {"Cache-Control", "no-cache"}},
                       .corps = "",
                       .delai = 120s};
  EXPECT_EQ(AbonnementNtfy::requete({"https://h/", topic22, " \t"}, ""), attendue);
  EXPECT_EQ(AbonnementNtfy::requete({"https://h/", topic22, "tk\r\nX: y"}, {}), attendue);
  attendue.entetes.push_back({"Authorization", "Bearer tk_1"});
  attendue.url += "?since=a%26b";
  EXPECT_EQ(AbonnementNtfy::requete({"https://h/", topic22, " tk_1 "}, "a&b"), attendue);
  EXPECT_EQ(AbonnementNtfy::requete({"http://[::1]/a?b=c", topic22, ""}, "1s")->url,
            "http://[::1]/a?b=c/" + topic22 + "/sse&since=1s");
  EXPECT_EQ(AbonnementNtfy::requete({"https://1.2.3.4.h#f", topic22, ""}, "1s")->url,
            "https://1.2.3.4.h?since=1s#f/" + topic22 + "/sse");
  EXPECT_FALSE(AbonnementNtfy::requete({"http://h", topic22, ""}, {}));
}

TEST(AbonnementNtfy, RattrapageEtRecul) {
  const std::pair<double, std::string> cas[] = {{-5, "1s"},    {1.2, "2s"},    {59.01, "60s"},
                                                {60, "1m"},    {60.5, "2m"},   {1740, "29m"},
                                                {1741, "30m"}, {1e300, "30m"}, {HUGE_VAL, ""}};
  for (const auto& [secondes, depuis] : cas)
    EXPECT_EQ(AbonnementNtfy::depuis(AbonnementNtfy::Secondes(secondes)).value_or(""), depuis) << secondes;
  EXPECT_EQ(AbonnementNtfy::depuis({}), std::nullopt);
  EXPECT_EQ(AbonnementNtfy::recul(std::numeric_limits<int>::min()), 2s);
  EXPECT_EQ(AbonnementNtfy::recul(std::numeric_limits<int>::max()), 60s);
}

TEST(JournalIdsNtfy, OublieDansLOrdreDArrivee) {
  for (const auto& [capacite, ids, attendus] :
       {std::tuple(2, "abaca", "oonoo"), {2, "abacb", "oonon"}, {-7, "aabba", "onono"}}) {
    JournalIdsNtfy journal(capacite);
    EXPECT_FALSE(journal.neuf(""));
    std::string neufs;
    for (const char id : std::string_view(ids)) neufs += journal.neuf({id}) ? 'o' : 'n';
    EXPECT_EQ(neufs, attendus) << capacite << ' ' << ids;
    EXPECT_EQ(journal.compte(), static_cast<std::size_t>(std::max(capacite, 1)));
  }
}

}  // namespace
}  // namespace tarnavelle
