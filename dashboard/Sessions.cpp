#include "dashboard/Sessions.h"

#include <algorithm>

namespace zeb {

namespace {

// In a time that tells nothing of where they differ.
bool SameToken(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  unsigned difference = 0;
  for (std::size_t i = 0; i < a.size(); ++i)
    difference |= static_cast<unsigned char>(a[i]) ^ static_cast<unsigned>(static_cast<unsigned char>(b[i]));
  return difference == 0;
}

}  // namespace

std::string Sessions::Begin(MonotonicTime now) {
  (void)Find("", now);  // those that are over go
  if (sessions_.size() >= kMost)
    sessions_.erase(std::min_element(sessions_.begin(), sessions_.end(),
                                     [](const Session& a, const Session& b) { return a.used < b.used; }));
  sessions_.push_back({secrets_.RandomToken(), now, now});
  return sessions_.back().token;
}

Sessions::Session* Sessions::Find(std::string_view token, MonotonicTime now) {
  std::erase_if(sessions_, [&](const Session& session) {
    return now - session.used >= kUnused || now - session.begun >= kWhole;
  });
  for (Session& session : sessions_)
    if (SameToken(session.token, token)) return &session;
  return nullptr;
}

bool Sessions::Use(std::string_view token, MonotonicTime now) {
  Session* session = Find(token, now);
  if (session) session->used = now;
  return session != nullptr;
}

bool Sessions::Lasts(std::string_view token, MonotonicTime now) {
  return Find(token, now) != nullptr;
}

void Sessions::End(std::string_view token) {
  std::erase_if(sessions_, [&](const Session& session) { return SameToken(session.token, token); });
}

}  // namespace zeb
