#include <fcntl.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <memory>

#include "posix/net/RunningServer.h"
#include "posix/net/SessionFixture.h"
#include "posix/support/TemporaryFolder.h"

namespace VorselKelp::testing_support {
namespace {

/// A key with a certificate that vouches for itself; times are seconds from now.
class Identity {
 public:
  Identity(const std::string& name, long begins, long ends) {
    X509_set_version(certificate_.get(), 2);
    ASN1_INTEGER_set(X509_get_serialNumber(certificate_.get()), 1);
    X509_gmtime_adj(X509_getm_notBefore(certificate_.get()), begins);
    X509_gmtime_adj(X509_getm_notAfter(certificate_.get()), ends);
    X509_set_pubkey(certificate_.get(), key_.get());
    auto* subject = X509_get_subject_name(certificate_.get());
    X509_NAME_add_entry_by_txt(subject, "CN", MBSTRING_ASC, reinterpret_cast<const unsigned char*>("test"),
                               -1, -1, 0);
    X509_set_issuer_name(certificate_.get(), subject);
    auto* extension = X509V3_EXT_conf_nid(nullptr, nullptr, NID_subject_alt_name, name.c_str());
    X509_add_ext(certificate_.get(), extension, -1);
    X509_EXTENSION_free(extension);
    X509_sign(certificate_.get(), key_.get(), EVP_sha256());
  }
  void writeTo(const std::string& path) const {
    const std::unique_ptr<FILE, decltype(&std::fclose)> file(std::fopen(path.c_str(), "w"), std::fclose);
    PEM_write_X509(file.get(), certificate_.get());
  }
  httplib::SSLServer server() const { return {certificate_.get(), key_.get()}; }

 private:
  std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> key_{EVP_EC_gen("P-256"), EVP_PKEY_free};
  std::unique_ptr<X509, decltype(&X509_free)> certificate_{X509_new(), X509_free};
};

class CertificateTest : public SessionFixture {
 protected:
  static constexpr long hour = 3600;

  /// Asks a server with this identity, trusting it as an authority where `trusted`.
  std::optional<Error> ask(const Identity& identity, bool trusted = true) {
    httplib::SSLServer server(identity.server());
    server.Get("/", [](const httplib::Request&, httplib::Response& response) {
      response.set_content("x", "text/plain");
    });
    const Running running(server);
    if (trusted) session_ = trusting(identity);
    const auto result = fetch(running.url("/", "https"));
    EXPECT_NE(result.error.has_value(), result.response.has_value());
    return result.error;
  }
  std::shared_ptr<platform::URLSession> trusting(const Identity& identity) const {
    identity.writeTo(folder_ / "authorities.pem");
    posix::URLSessionOptions options;
    options.certificateFile = folder_ / "authorities.pem";
    return posix::makeURLSession(options);
  }
  const TemporaryFolder folder_;
};

TEST_F(CertificateTest, OnlyAValidOneOfAnAuthorityForThisHostCounts) {
  EXPECT_FALSE(ask({"IP:127.0.0.1", -hour, hour}));
  for (const Identity& wrong :
       {Identity("IP:127.0.0.2", -hour, hour), Identity("DNS:localhost", -hour, hour),
        Identity("IP:127.0.0.1", -2 * hour, -hour), Identity("IP:127.0.0.1", hour, 2 * hour)}) {
    EXPECT_TRUE(ask(wrong));
  }
  session_ = posix::makeURLSession();
  EXPECT_TRUE(ask({"IP:127.0.0.1", -hour, hour}, false));
}

TEST_F(CertificateTest, AuthoritiesAreReadOnceForAllConnections) {
  const Identity identity("IP:127.0.0.1", -hour, hour);
  httplib::SSLServer first(identity.server());
  httplib::SSLServer second(identity.server());
  const Running one(first);
  const Running other(second);
  session_ = trusting(identity);
  const int watch = ::inotify_init1(IN_NONBLOCK);
  // Events of one kind alone that nobody has read yet would become one.
  ASSERT_GE(::inotify_add_watch(watch, (folder_ / "authorities.pem").c_str(), IN_OPEN | IN_CLOSE_NOWRITE), 0);
  // Each server ends its connections, so each request makes a new one.
  for (int i = 0; i < 3; ++i) {
    for (const auto* server : {&one, &other}) EXPECT_FALSE(fetch(server->url("/", "https")).error);
  }
  int opened = 0;
  alignas(inotify_event) std::array<char, 4096> events;
  for (ssize_t got; (got = ::read(watch, events.data(), events.size())) > 0;) {
    // Events of a watched file carry no name.
    for (const char* at = events.data(); at < events.data() + got; at += sizeof(inotify_event))
      opened += (reinterpret_cast<const inotify_event*>(at)->mask & IN_OPEN) != 0 ? 1 : 0;
  }
  ::close(watch);
  EXPECT_EQ(opened, 1);
}

}  // namespace
}  // namespace VorselKelp::testing_support
