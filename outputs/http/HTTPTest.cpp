#include "outputs/http/HTTPTest.h"

#include "outputs/test/ConnectionTest.h"

namespace zeb {

void HTTPTest::Run(TestSteps& steps) {
  TestConnection(environment_.loop, environment_.network, target_, steps);
}

}  // namespace zeb
