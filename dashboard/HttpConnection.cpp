#include "dashboard/HttpConnection.h"

#include <utility>

namespace zeb {

namespace {

constexpr Duration kSendingTurn = std::chrono::milliseconds(250);

}  // namespace

HttpConnection::HttpConnection(EventLoop& loop, Owner& owner, WayIn way,
                               std::unique_ptr<TcpConnection> connection)
    : loop_(loop),
      owner_(owner),
      way_(way),
      connection_(std::move(connection)),
      peerAddress_(connection_->PeerAddress()) {}

void HttpConnection::Begin() {
  connection_->onData = [weak = weak_from_this()](std::string_view bytes) {
    if (const auto self = weak.lock()) self->Arrived(bytes);
  };
  connection_->onClosed = [weak = weak_from_this()] {
    if (const auto self = weak.lock()) self->Drop();
  };
  Enter(Phase::kIdle, HttpLimits::kFirst, &HttpConnection::Drop);
}

void HttpConnection::Enter(Phase phase, Duration limit, void (HttpConnection::*atLimit)()) {
  phase_ = phase;
  since_ = loop_.Monotonic();
  limit_ = loop_.After(limit, [weak = weak_from_this(), atLimit] {
    if (const auto self = weak.lock()) (self.get()->*atLimit)();
  });
}

void HttpConnection::Drop() {
  if (phase_ == Phase::kGone) return;
  const auto self = shared_from_this();
  phase_ = Phase::kGone;
  limit_.Stop();
  sending_.Stop();
  connection_.reset();
  owner_.Gone(*this);
}

void HttpConnection::Arrived(std::string_view bytes) {
  if (phase_ == Phase::kStreaming || phase_ == Phase::kClosing || phase_ == Phase::kGone || overrun_) return;
  // While a request is read the reader finds out what is too long, and says so.
  if (phase_ == Phase::kHandling && buffer_.size() + bytes.size() > kMostRequestBytes) {
    overrun_ = true;
    buffer_ = {};
    return;
  }
  buffer_ += bytes;
  if (phase_ != Phase::kHandling && !advancePosted_) Advance();
}

// Others have their turn between two requests of one peer.
void HttpConnection::AdvanceLater() {
  if (std::exchange(advancePosted_, true)) return;
  loop_.Post([weak = weak_from_this()] {
    const auto self = weak.lock();
    if (!self) return;
    self->advancePosted_ = false;
    self->Advance();
  });
}

void HttpConnection::Advance() {
  if (phase_ != Phase::kIdle && phase_ != Phase::kReading) return;
  if (connection_->UnsentBytes() > HttpLimits::kMostUnsent) return;  // WatchSending comes back
  if (phase_ == Phase::kIdle) {
    while (buffer_.starts_with("\r\n")) buffer_.erase(0, 2);
    if (buffer_.empty()) return;
    reader_ = std::make_unique<HttpRequestReader>();
    Enter(Phase::kReading, HttpLimits::kRequest, &HttpConnection::RequestTooSlow);
  }
  switch (reader_->Take(buffer_)) {
    case HttpRequestReader::State::kMore:
      if (reader_->WantsContinue()) Send("HTTP/1.1 100 Continue\r\n\r\n");
      return;
    case HttpRequestReader::State::kFailed:
      return Refuse(reader_->Refusal());
    case HttpRequestReader::State::kDone:
      break;
  }
  HttpRequest request = reader_->TakeRequest();
  reader_.reset();
  request.way = way_;
  request.peerAddress = peerAddress_;
  headOnly_ = request.method == "HEAD";
  keepAlive_ = request.keepAlive;
  Enter(Phase::kHandling, HttpLimits::kHandler, &HttpConnection::HandlerTooSlow);
  // What came in advance is held to the same bound as what comes while the request is handled.
  if (buffer_.size() > kMostRequestBytes) {
    overrun_ = true;
    buffer_ = {};
  }
  owner_.Handle(request, HttpReply(weak_from_this(), ++request_));
}

void HttpConnection::Refuse(const HttpAnswer& answer) {
  owner_.Refused(*this, "status " + std::to_string(answer.status));
  Send(WriteHttpAnswer(answer, false, AnswerBody::kSent));
  // A connection that is closed while the peer still sends is reset, and the answer lost.
  buffer_ = {};
  reader_.reset();
  Enter(Phase::kClosing, HttpLimits::kLinger, &HttpConnection::Leave);
}

void HttpConnection::RequestTooSlow() {
  Refuse(ErrorAnswer(408, "the request did not come in whole within 10 s"));
}

// Who still takes the last answer is not idle; WatchSending looks after that.
void HttpConnection::IdleTooLong() {
  if (connection_->UnsentBytes() == 0) return Drop();
  Enter(Phase::kIdle, HttpLimits::kIdle, &HttpConnection::IdleTooLong);
}

void HttpConnection::HandlerTooSlow() {
  Answer(request_, ErrorAnswer(503, "there is no answer within 30 s"));
}

void HttpConnection::Answer(std::uint64_t request, const HttpAnswer& answer) {
  if (request != request_ || phase_ != Phase::kHandling) return;
  if (answer.body.size() > kMostAnswerBytes)
    return Answer(request, ErrorAnswer(500, "the answer is too long: ask for a part of it"));
  const bool stays = keepAlive_ && !overrun_;
  Send(WriteHttpAnswer(answer, stays, headOnly_ ? AnswerBody::kLeftOut : AnswerBody::kSent));
  if (stays) {
    Enter(Phase::kIdle, HttpLimits::kIdle, &HttpConnection::IdleTooLong);
    return AdvanceLater();
  }
  // WatchSending ends it earlier, or when the peer does not take it.
  if (connection_->UnsentBytes() <= HttpLimits::kMostUnsent && !overrun_) return Leave();
  if (connection_->UnsentBytes() == 0)
    return Enter(Phase::kClosing, HttpLimits::kLinger, &HttpConnection::Leave);
  phase_ = Phase::kClosing;
  limit_.Stop();
}

void HttpConnection::Send(const std::string& bytes) {
  connection_->Send(bytes);
  const std::size_t unsent = connection_->UnsentBytes();
  if (unsent == 0) return;
  takenBy_ =
      loop_.Monotonic() + HttpLimits::kTaking + std::chrono::seconds(unsent / HttpLimits::kTakenPerSecond);
  if (!sending_.Running()) {
    sending_ = loop_.Every(kSendingTurn, [weak = weak_from_this()] {
      if (const auto self = weak.lock()) self->WatchSending();
    });
  }
}

void HttpConnection::WatchSending() {
  if (phase_ == Phase::kStreaming || connection_->UnsentBytes() == 0) {
    sending_.Stop();
    if (phase_ == Phase::kClosing && !limit_.Running()) return Leave();
    return Advance();
  }
  if (loop_.Monotonic() >= takenBy_) {
    owner_.Refused(*this, "an answer was not taken");
    return Drop();
  }
  Advance();
}

// What is still queued is sent, as far as the peer takes it soon.
void HttpConnection::Leave() {
  connection_->Close();
  Drop();
}

bool HttpConnection::BeginEvents(std::uint64_t request, std::function<bool()> still) {
  if (request != request_ || phase_ != Phase::kHandling) return false;
  if (!owner_.MayStream()) {
    HttpAnswer answer = ErrorAnswer(503, "there are too many readers of events");
    answer.headers.emplace_back("Retry-After", "30");
    Answer(request, answer);
    return false;
  }
  HttpAnswer answer;
  answer.type = "text/event-stream";
  if (headOnly_) {
    Answer(request, answer);
    return false;
  }
  phase_ = Phase::kStreaming;
  since_ = loop_.Monotonic();
  buffer_ = {};
  still_ = std::move(still);
  limit_ = loop_.Every(HttpLimits::kHeartbeat, [weak = weak_from_this()] {
    if (const auto self = weak.lock()) self->Heartbeat();
  });
  connection_->Send(WriteHttpAnswer(answer, false, AnswerBody::kEndless));
  return true;
}

bool HttpConnection::Streams(std::uint64_t request) const {
  return request == request_ && phase_ == Phase::kStreaming;
}

void HttpConnection::SendEvent(std::uint64_t request, std::string_view text) {
  if (!Streams(request)) return;
  const std::size_t unsent = connection_->UnsentBytes();
  if (unsent > 0 && unsent + text.size() > HttpLimits::kMostUnreadEvents) return Drop();
  connection_->Send(text);
}

void HttpConnection::EndEvents(std::uint64_t request) {
  if (Streams(request)) Leave();
}

void HttpConnection::Heartbeat() {
  if (still_ && !still_()) return Leave();
  const std::size_t unsent = connection_->UnsentBytes();
  // Nothing was taken between the last two.
  if (unsentAtHeartbeat_ > 0 && unsent >= unsentAtHeartbeat_) return Drop();
  unsentAtHeartbeat_ = unsent;
  if (unsent == 0) connection_->Send(":\n\n");
}

}  // namespace zeb
