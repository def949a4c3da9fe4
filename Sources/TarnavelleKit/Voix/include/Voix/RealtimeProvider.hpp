// The realtime speech-to-speech services that a voice session can be held with, and which of them a
// session uses. Keys are never stored here: their caller looks them up under `cleEnv`. The session's
// JSON is RealtimeRequest's business. The catalogue is immutable: all is safe from any thread.
#pragma once

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace tarnavelle {

/// The JSON shape in which a service expects its session events.
enum class DialecteRealtime { openai, xai };

/// Name of a dialect: "openai" or "xai".
std::string_view valeurBrute(DialecteRealtime dialecte);

/// The dialect of exactly that name, which a service of the catalogue speaks.
std::optional<DialecteRealtime> dialecteDepuis(std::string_view valeurBrute);

struct RealtimeProvider {
  std::string id;               ///< stable, stored in settings
  std::string titre;            ///< shown to the user
  std::string editeur;          ///< shown to the user
  std::string endpoint;         ///< WebSocket URL, without query
  std::string modeleParDefaut;  ///< when the user chose none
  std::string voixParDefaut;    ///< when the user chose none
  std::string cleEnv;           ///< variable or setting that holds the API key
  DialecteRealtime dialecte = DialecteRealtime::openai;

  bool operator==(const RealtimeProvider&) const = default;

  /// Names of the keys for which a value was found.
  using Cles = std::set<std::string, std::less<>>;

  static const RealtimeProvider& openai();
  static const RealtimeProvider& openai21();
  static const RealtimeProvider& grok();

  /// The catalogue, in its fixed order: a service that the user did not choose is taken by its rank.
  static const std::vector<RealtimeProvider>& tous();

  /// The member of exactly that identifier, or null.
  static const RealtimeProvider* parId(const std::optional<std::string>& id);

  /// The one a session will use: the chosen one when its key is present, else the first whose key is.
  /// Null when no key is: the voice is unavailable.
  static const RealtimeProvider* actif(const Cles& clesPresentes, const std::optional<std::string>& choisi);

  struct Offre;
  /// Every member, in order, and whether its key is present.
  static std::vector<Offre> offre(const Cles& clesPresentes);

  /// The names of the keys to look for, in first-seen order.
  static std::vector<std::string> clesDistinctes();

  /// The address of a session with that model. Nothing when the result is no URL (RFC 3986) or the name
  /// is not well-formed UTF-8.
  std::optional<std::string> url(std::string_view model) const;
};

struct RealtimeProvider::Offre {
  RealtimeProvider provider;
  bool disponible = false;

  bool operator==(const Offre&) const = default;
};

}  // namespace tarnavelle
