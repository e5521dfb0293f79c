#include <gtest/gtest.h>

#include <QCoreApplication>
#include <memory>

#include "platform/qt/QtLoop.h"

namespace zeb {
namespace {

// Qt wants one application object, alive while anything of Qt is used.
class QtEnvironment : public testing::Environment {
  void SetUp() override {
    QtLoop::ChoosePlainDispatcher();
    application_ = std::make_unique<QCoreApplication>(count_, arguments_);
  }
  void TearDown() override { application_.reset(); }

  int count_ = 1;
  char name_[5] = "test";
  char* arguments_[2] = {name_, nullptr};
  std::unique_ptr<QCoreApplication> application_;
};

[[maybe_unused]] const auto* const environment = testing::AddGlobalTestEnvironment(new QtEnvironment);

}  // namespace
}  // namespace zeb
