#pragma once

#include <gtest/gtest.h>

#include <memory>

#include "base/text.h"
#include "tests/platform/backend_world.h"

namespace varnel::testing_support {

class Contract : public ::testing::TestWithParam<Backend> {
 protected:
  void SetUp() override {
    world_ = GetParam().make();
    ASSERT_TRUE(p().files.DirectoryExists(world_->Scratch())) << "scratch folder not made";
  }
  void TearDown() override { world_.reset(); }

  Platform p() { return world_->Get(); }
  std::wstring Scratch(std::wstring_view name = {}) {
    return name.empty() ? world_->Scratch() : world_->Scratch() + L"\\" + std::wstring(name);
  }
  std::wstring Key(std::wstring_view sub = {}) {
    return sub.empty() ? world_->KeyName() : world_->KeyName() + L"\\" + std::wstring(sub);
  }
  std::wstring ClassKey() { return world_->ClassKey(); }

  static RegValue Str(std::wstring_view s, std::uint32_t type = RegType::String) {
    return RegValue{type, text::ToUtf16Bytes(s)};
  }
  static std::vector<std::uint8_t> Bytes(std::string_view s) {
    return std::vector<std::uint8_t>(s.begin(), s.end());
  }

 private:
  std::unique_ptr<World> world_;
};

inline std::string BackendName(const ::testing::TestParamInfo<Backend>& info) {
  return info.param.name;
}

}  // namespace varnel::testing_support
