// A TCP connection, encrypted or not, as the clients of this folder use it: where a URL leads, name
// look-up, connection, TLS with the certificate verified for that host, and one way to say why it failed.
// What is spoken over it is its user's business. It is a stream for Asio and Beast, plain handlers only.
//
// Everything happens on the event loop's thread, and the connection outlives the loop's last turn.
// Private to this folder: public headers include no Boost.
#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ssl/context.hpp>
#include <boost/asio/ssl/stream.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/system/system_error.hpp>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "Liaison/ErreurReseau.hpp"

namespace tarnavelle::interne {

namespace asio = boost::asio;
using asio::ip::tcp;
using Erreur = boost::system::error_code;

/// Where a URL leads.
struct Adresse {
  bool tls = false;
  std::string hote;  ///< name or address, without brackets
  std::uint16_t port = 0;
  std::string entete;  ///< the Host header
  std::string chemin;  ///< path and query, never empty

  /// Nothing for a malformed URL or another scheme. `protocole` is the plain scheme, "http" or "ws";
  /// the same with an "s" asks for TLS.
  static std::optional<Adresse> depuis(std::string_view url, std::string_view protocole);

  /// Whether one connection can serve both.
  bool memeServeur(const Adresse& autre) const {
    return tls == autre.tls && hote == autre.hote && port == autre.port;
  }
};

/// The kind of an error met on an open connection. A connection that could not be opened says its own.
ErreurReseau classer(const Erreur& erreur);

class Connexion {
 public:
  using Fini = std::function<void(std::optional<ErreurReseau>)>;  ///< nothing: it is open
  using executor_type = asio::io_context::executor_type;
  using next_layer_type = tcp::socket;

  /// With TLS, the system's store of authorities is loaded here, SSL_CERT_FILE and SSL_CERT_DIR heeded. Without
  /// one no certificate verifies.
  Connexion(asio::io_context& boucle, bool tls);

  /// Once per connection. `fini` is called once, from the loop, `delai` after the call at the latest.
  /// A name look-up cannot be interrupted: past the delay it keeps the loop at work, unheard. `tenue` lives as
  /// long as anything of it does: a connection whose loop goes on without it is to hold itself.
  void ouvrir(const Adresse& adresse, std::optional<std::chrono::milliseconds> delai, Fini fini,
              std::shared_ptr<void> tenue = {});

  /// Closes at once. What was under way ends with an error, an opening with `annulee` before this returns.
  void fermer();

  executor_type get_executor() { return boucle_.get_executor(); }
  tcp::socket& next_layer() { return chiffre_ ? chiffre_->next_layer() : clair_; }
  bool chiffree() const { return chiffre_.has_value(); }

  template <class Tampons>
  std::size_t read_some(const Tampons& tampons, Erreur& erreur) {
    return chiffre_ ? chiffre_->read_some(tampons, erreur) : clair_.read_some(tampons, erreur);
  }
  template <class Tampons>
  std::size_t write_some(const Tampons& tampons, Erreur& erreur) {
    return chiffre_ ? chiffre_->write_some(tampons, erreur) : clair_.write_some(tampons, erreur);
  }
  template <class Tampons>
  std::size_t read_some(const Tampons& tampons) {
    return chiffre_ ? chiffre_->read_some(tampons) : clair_.read_some(tampons);
  }
  template <class Tampons>
  std::size_t write_some(const Tampons& tampons) {
    return chiffre_ ? chiffre_->write_some(tampons) : clair_.write_some(tampons);
  }
  template <class Tampons, class Suite>
  void async_read_some(const Tampons& tampons, Suite&& suite) {
    if (chiffre_)
      chiffre_->async_read_some(tampons, std::forward<Suite>(suite));
    else
      clair_.async_read_some(tampons, std::forward<Suite>(suite));
  }
  template <class Tampons, class Suite>
  void async_write_some(const Tampons& tampons, Suite&& suite) {
    if (chiffre_)
      chiffre_->async_write_some(tampons, std::forward<Suite>(suite));
    else
      clair_.async_write_some(tampons, std::forward<Suite>(suite));
  }

  /// Calls with the stream that is spoken over: the socket, or TLS over it.
  template <class Action>
  void surPrise(Action action) {
    if (chiffre_)
      action(*chiffre_);
    else
      action(clair_);
  }

 private:
  using Chiffre = asio::ssl::stream<tcp::socket>;

  void connecter(const tcp::resolver::results_type& points, std::shared_ptr<void> tenue);
  void negocier(std::shared_ptr<void> tenue);
  void conclure(std::optional<ErreurReseau> erreur);

  asio::io_context& boucle_;
  std::optional<tcp::resolver> resolveur_;       // made when needed: a bridge's start counts
  std::optional<asio::steady_timer> minuterie_;  // the same
  std::optional<asio::ssl::context> contexte_;
  tcp::socket clair_;
  std::optional<Chiffre> chiffre_;
  bool autoritesLues_ = false;
  std::string hote_;
  Fini fini_;
};

}  // namespace tarnavelle::interne
