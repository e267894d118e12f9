#include <fcntl.h>
#include <unistd.h>

#include "VorselKelpPosix/Descriptor.h"
#include "VorselKelpPosix/DescriptorWriter.h"
#include "VorselKelpPosix/FileIO.h"
#include "VorselKelpWebPush/Base64Url.h"
#include "brellixctl/Answer.h"
#include "brellixctl/Commands.h"
#include "brellixctl/webpush/Arguments.h"

namespace brellixctl {

using VorselKelp::Error;
using VorselKelp::JSONAny;
using VorselKelp::Status;
namespace posix = VorselKelp::posix;
namespace webpush = VorselKelp::webpush;

namespace {

/// A key that is there already may be all that leads to a publisher's subscribers: it is never replaced.
Status writeKey(const std::string& path, const std::string& pem) {
  posix::Descriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
  if (file.number() < 0) return Error{"Cannot write the key: " + posix::systemError(path).description};
  if (posix::writeAll(file.number(), pem) && ::fsync(file.number()) == 0 && file.close())
    return VorselKelp::Done{};
  const auto error = posix::systemError(path);
  ::unlink(path.c_str());
  return Error{"Cannot write the key: " + error.description};
}

}  // namespace

int runVapid(const VapidRequest& request) {
  const auto keys = request.key.empty() ? webpush::makeVapidKeys() : readSenderKeys(request.key);
  if (!keys) return fail(keys.error());
  const auto pem = webpush::vapidPem(*keys);
  if (!pem) return fail(pem.error());
  const auto publicKey = webpush::toBase64Url(keys->publicKey);
  JSONAny::Dictionary json{{"publicKey", publicKey}};
  std::string words = "Public key:  " + publicKey + '\n';
  if (!request.endpoint.empty()) {
    const auto authorization = authorizationFor(*keys, request.endpoint, request.subject);
    if (!authorization) return fail(authorization.error());
    json.push_back({"authorization", *authorization});
    words += "For the endpoint, until twelve hours from now:\nAuthorization: " + *authorization + '\n';
  }
  if (!request.out.empty()) {
    if (const auto written = writeKey(request.out, *pem); !written) return fail(written.error());
    json.push_back({"file", request.out});
    words += "Private key: in " + request.out + '\n';
  } else {
    const auto privateKey = webpush::toBase64Url(keys->privateKey);
    json.push_back({"privateKey", privateKey});
    json.push_back({"pem", *pem});
    words += "Private key: " + privateKey + '\n' + *pem;
  }
  return answer(std::move(json), words, "");
}

}  // namespace brellixctl
