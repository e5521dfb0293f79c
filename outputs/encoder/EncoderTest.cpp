#include "outputs/encoder/EncoderTest.h"

#include <memory>
#include <string>

#include "outputs/encoder/IcecastWatch.h"
#include "outputs/test/ConnectionTest.h"

namespace zeb {

void EncoderTest::Run(TestSteps& steps) {
  if (settings_.EncoderType == 0) {
    steps.Add("encoder", Failure{"no EncoderType is set"});
  } else if (settings_.EncoderType != kShoutcast) {
    steps.Add("encoder",
              Failure{environment_.encoders ? "an encoder of this kind cannot be tried without starting it"
                                            : "encoders of this kind are not available on this platform"});
  } else if (TestConnection(environment_.loop, environment_.network, target_, steps) &&
             !settings_.IcecastMount.empty() && steps.HasTime()) {
    LookAtStatusPage(steps);
  }
}

void EncoderTest::LookAtStatusPage(TestSteps& steps) {
  const std::shared_ptr<TcpClientControl> client = environment_.network.MakeClient();
  const std::string& mount = settings_.IcecastMount;
  const Epoch here;
  const ExchangeResult answer =
      SendRequest(environment_.loop, *client, target_, StatusPageRequest(target_, mount), here.Now());
  const std::string what = "status page of the server";
  if (answer.end != ExchangeResult::kSent) {
    steps.Add(what, Failure{answer.problem});
  } else if (answer.StatusCode() != 200) {
    // A server may well show none, and take titles all the same.
    steps.Add(what, {}, answer.reply.empty() ? "no answer within a second" : "'" + answer.StatusLine() + "'");
  } else if (const std::string since = StreamBeginning(answer.reply, mount); since.empty()) {
    steps.Add("source of the mount " + mount, Failure{"there is none, so titles are not taken"});
  } else {
    steps.Add("source of the mount " + mount, {}, "since " + since);
  }
}

}  // namespace zeb
