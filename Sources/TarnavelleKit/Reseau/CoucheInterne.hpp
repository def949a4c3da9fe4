// A connection as Beast's WebSocket is to see it: what the server said is read before a failed write is told,
// a refusal of the handshake is kept as far as it came, and a goodbye has an end. On the event loop's thread,
// as the connection is. Private to this folder.
#pragma once

#include <boost/beast/core/buffers_prefix.hpp>
#include <boost/beast/core/buffers_to_string.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/string_body.hpp>
#include <boost/beast/websocket/ssl.hpp>
#include <boost/beast/websocket/teardown.hpp>
#include <chrono>
#include <optional>
#include <string>
#include <utility>

#include "ConnexionInterne.hpp"

namespace tarnavelle::interne {

namespace beast = boost::beast;
namespace websocket = beast::websocket;

/// A server's answer to the handshake when it is no agreement.
struct RefusHTTP {
  int statut = 0;
  std::string corps;  ///< as much of it as came and was kept
};

class Couche : public Connexion {
 public:
  Couche(asio::io_context& boucle, bool tls, std::chrono::milliseconds adieu)
      : Connexion(boucle, tls), adieu_(adieu), patience_(adieu), attente_(boucle), fin_(boucle) {}

  /// The server has said its last word.
  void nePlusAttendre() {
    patience_ = {};
    attente_.cancel();
    borner();
  }

  void finirLaPoignee() {
    poignee_ = false;
    reponse_ = {};
  }

  /// What the server answered instead of agreeing, once the head of it came, whole or cut after that.
  std::optional<RefusHTTP> refus() const {
    beast::http::response_parser<beast::http::string_body> lecture;
    lecture.eager(true);
    Erreur inachevee;
    lecture.put(asio::buffer(reponse_), inachevee);
    const auto& reponse = lecture.get();
    if (!lecture.is_header_done() || reponse.result() == beast::http::status::switching_protocols)
      return std::nullopt;
    return RefusHTTP{.statut = static_cast<int>(reponse.result_int()), .corps = reponse.body()};
  }

  template <class Tampons, class Suite>
  void async_read_some(const Tampons& tampons, Suite&& suite) {
    if (!poignee_) return Connexion::async_read_some(tampons, std::forward<Suite>(suite));
    Connexion::async_read_some(
        beast::buffers_prefix(lecturePoignee, tampons),
        [this, tampons, suite = std::forward<Suite>(suite)](Erreur erreur, std::size_t octets) mutable {
          if (reponse_.size() < reponseMax)
            reponse_ += beast::buffers_to_string(beast::buffers_prefix(octets, tampons));
          suite(erreur, octets);
        });
  }

  /// Beast gives a connection up at the first failed write. The failure is told late, so that what the
  /// server said before it closed, and why it did, is read first.
  template <class Tampons, class Suite>
  void async_write_some(const Tampons& tampons, Suite&& suite) {
    Connexion::async_write_some(
        tampons, [this, suite = std::forward<Suite>(suite)](Erreur erreur, std::size_t octets) mutable {
          if (!erreur || !next_layer().is_open()) return suite(erreur, octets);
          attente_.expires_after(patience_);
          attente_.async_wait(
              [suite = std::move(suite), erreur, octets](Erreur) mutable { suite(erreur, octets); });
        });
  }

  /// However the connection itself ends, and if the server never lets go of it, the reason that Beast has
  /// for ending it stays.
  template <class Suite>
  friend void async_teardown(beast::role_type role, Couche& couche, Suite&& suite) {
    couche.borner();
    couche.surPrise([&](auto& flux) {
      using websocket::async_teardown;
      async_teardown(role, flux, [suite = std::forward<Suite>(suite)](Erreur) mutable { suite({}); });
    });
  }

 private:
  /// Bytes read at a time during the handshake. What comes with the server's answer must fit Beast's own
  /// buffer (1536 bytes), or the connection would fail for having been answered too quickly.
  static constexpr std::size_t lecturePoignee = 1024;
  static constexpr std::size_t reponseMax = 16 * 1024;  ///< bytes kept of that answer, about

  /// Beast ends a goodbye with its timer of silence, which may be far from due.
  void borner() {
    if (std::exchange(bornee_, true)) return;
    fin_.expires_after(adieu_);
    fin_.async_wait([this](Erreur annulee) {
      if (!annulee) fermer();
    });
  }

  bool poignee_ = true;
  bool bornee_ = false;
  std::string reponse_;
  const std::chrono::milliseconds adieu_;
  std::chrono::milliseconds patience_;
  asio::steady_timer attente_;
  asio::steady_timer fin_;
};

}  // namespace tarnavelle::interne
