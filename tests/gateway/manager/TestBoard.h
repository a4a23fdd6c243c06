#pragma once

#include <string>

#include "gateway/description/Reader.h"
#include "gateway/manager/Model.h"

namespace quorvel::manager::test {

// The shipped board called `name`; fails the test when it cannot be read.
[[nodiscard]] description::Board shippedBoard(const std::string& name);

// A model of the default board at power-on with nothing saved.
[[nodiscard]] Model defaultModel();

// A variable's text, or "(absent)".
[[nodiscard]] std::string text(const Model& model, unsigned radio, unsigned sub, const std::string& name);

// A station of the default board by its last byte.
[[nodiscard]] const Station& station(const Model& model, unsigned lastByte);
[[nodiscard]] common::MacAddress stationMac(unsigned lastByte);

// A folder of its own that goes away with the object.
class TemporaryFolder {
  public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    [[nodiscard]] std::string path(const std::string& name) const {
        return path_ + "/" + name;
    }

  private:
    std::string path_;
};

}  // namespace quorvel::manager::test
