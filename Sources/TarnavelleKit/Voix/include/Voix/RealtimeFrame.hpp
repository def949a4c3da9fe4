// One event of a realtime voice service, as the client acts on it, and the arguments of the tool calls
// that come with such events. What each event makes the client do is RealtimeClient's business.
// Reading never fails: what is unreadable is an `error`, what is unknown or malformed is `other`.
// Plain values and pure functions, safe from any thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "Socle/Octets.hpp"
#include "Voix/FileAppelsRealtime.hpp"
#include "Voix/RealtimeProvider.hpp"
#include "Voix/RefusRealtime.hpp"
#include "Voix/UsageRealtime.hpp"

namespace tarnavelle {

struct RealtimeFrame {
  /// A chunk of the model's voice: 24 kHz mono PCM, signed 16-bit little-endian.
  struct audioDelta {
    Octets octets;
    bool operator==(const audioDelta&) const = default;
  };
  /// Its arguments are "{}" when the call gave none.
  using toolCall = FileAppelsRealtime::Appel;
  /// What the model has said, its parts joined.
  struct message {
    std::string texte;
    bool operator==(const message&) const = default;
  };
  struct error {
    std::string texte;
    bool operator==(const error&) const = default;
  };
  struct other {
    std::string type;  ///< the event's name
    bool operator==(const other&) const = default;
  };
  struct sessionCreated {
    bool operator==(const sessionCreated&) const = default;
  };
  struct sessionUpdated {
    bool operator==(const sessionUpdated&) const = default;
  };
  struct responseDone {
    bool operator==(const responseDone&) const = default;
  };

  std::variant<audioDelta, toolCall, message, error, other, sessionCreated, sessionUpdated, responseDone> cas;

  bool operator==(const RealtimeFrame&) const = default;

  static RealtimeFrame decode(std::string_view texte, DialecteRealtime dialecte);

  /// The single facts that `LectureTrame` holds, for who needs only one of them.
  static std::optional<std::string> idItemCree(std::string_view texte);
  static std::optional<bool> ecouteEntree(std::string_view texte);
  static std::optional<std::string> transcriptionEntree(std::string_view texte);

  /// One argument of a tool call given as JSON text, which is parsed each time.
  static std::string texte(std::string_view cle, std::string_view argsJSON);
  static bool booleen(std::string_view cle, std::string_view argsJSON, bool defaut);
  /// The argument "text".
  static std::string commandText(std::string_view argsJSON);
  /// The boolean argument "verdict"; for want of one, whether the text contains "true".
  static bool verdict(std::string_view argsJSON);
};

/// All that the client needs of one frame.
struct LectureTrame {
  RealtimeFrame trame;
  std::optional<std::string> itemCree = {};       ///< id of a conversation item that was created
  std::optional<std::string> transcription = {};  ///< of what the user said
  bool transcriptionEnCours = false;              ///< the service will tell it again, longer or amended
  std::optional<bool> ecoute = {};                ///< the service hears the user start or stop speaking
  std::optional<TourRealtime> usage = {};         ///< what a finished response consumed
  std::optional<RefusRealtime> refus = {};        ///< of an `error`, or of a response that failed
  bool reponseCommence = false;                   ///< the model begins to answer
  std::optional<std::string> parole = {};         ///< what the model said, once and whole
  std::string itemSon = {};  ///< of an `audioDelta`: the item whose voice it is; may be empty

  bool operator==(const LectureTrame&) const = default;

  static LectureTrame lire(std::string_view texte, DialecteRealtime dialecte);
};

}  // namespace tarnavelle
