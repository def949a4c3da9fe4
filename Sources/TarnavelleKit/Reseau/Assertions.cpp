// What becomes of the assertions of Asio and Beast, here and in what is compiled with
// BOOST_ENABLE_ASSERT_DEBUG_HANDLER, in builds that have any.
#if !defined(NDEBUG)

#include <boost/assert.hpp>
#include <cstdio>
#include <cstdlib>
#include <string_view>

void boost::assertion_failed(const char* condition, const char* fonction, const char* fichier, long ligne) {
  // Beast 1.81 asserts that the end of an empty chunked body does not come byte by byte. It may, and is read
  // well.
  const std::string_view ou = fonction;
  if (std::string_view(condition) == "n >= 5" && ou.find("parse_chunk_header") != ou.npos) return;
  std::fprintf(stderr, "%s:%ld: %s: Assertion `%s' failed.\n", fichier, ligne, fonction, condition);
  std::abort();
}

void boost::assertion_failed_msg(const char* condition, const char* message, const char* fonction,
                                 const char* fichier, long ligne) {
  std::fprintf(stderr, "%s\n", message);
  assertion_failed(condition, fonction, fichier, ligne);
}

#endif
