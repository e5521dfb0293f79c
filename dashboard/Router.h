// Router: which handler answers which request, by method and path.
//
// A pattern is a path in which "{name}" stands for any one part that is not empty; a part written out goes
// before one that is not. HEAD is answered by the handlers of GET.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "dashboard/HttpMessage.h"
#include "dashboard/HttpReply.h"

namespace zeb {

// What a peer that did not come by the local socket must have: see AccessRules.
enum class Need { kNothing, kRead, kAct, kLocal };

class Router {
 public:
  using Handler = std::function<void(const HttpRequest&, const HttpReply&)>;
  using Plain = std::function<HttpAnswer(const HttpRequest&)>;

  struct Route {
    std::string method;
    std::vector<std::string> pattern;
    Need need;
    bool inTask;
    Handler handler;
  };

  // Answers at once. What it throws becomes status 500.
  void Add(std::string method, std::string_view pattern, Need need, Plain handler);
  // Runs in a task of its own, so it may wait: for 30 s, then the peer is told that there is no answer. The
  // request lives as long as the call.
  void AddTask(std::string method, std::string_view pattern, Need need, Plain handler);
  // Answers with the reply when it likes.
  void AddLater(std::string method, std::string_view pattern, Need need, Handler handler);

  const std::vector<Route>& All() const { return routes_; }

  struct Found {
    const Route* route = nullptr;
    std::string allow;  // the methods that there are when the path is right and the method is not
  };
  // Sets the request's arguments. The route stays where it is until the next Add.
  Found Find(HttpRequest& request) const;

 private:
  void Add(std::string method, std::string_view pattern, Need need, bool inTask, Handler handler);

  std::vector<Route> routes_;
};

}  // namespace zeb
