#include "common/UnixListener.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "common/UnixAddress.h"

namespace quorvel::common {
namespace {

// A socket's path in a folder of its own, which goes away with the object.
class SocketPath : public testing::Test {
  protected:
    SocketPath() {
        std::string name = std::filesystem::temp_directory_path() / "listener-XXXXXX";
        EXPECT_NE(mkdtemp(name.data()), nullptr);
        folder_ = name;
        path_ = folder_ + "/socket";
    }
    ~SocketPath() override {
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }

    std::string folder_;
    std::string path_;
    std::string problem_;
};

TEST_F(SocketPath, IsServedForThisUserAlone) {
    EXPECT_FALSE(isServed(path_));
    const Descriptor listener = listenOn(path_, problem_);
    ASSERT_TRUE(listener) << problem_;
    EXPECT_TRUE(isServed(path_));
    struct stat status = {};
    ASSERT_EQ(stat(path_.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0600U);
}

TEST_F(SocketPath, ThatIsServedIsLeftToItsServer) {
    const Descriptor first = listenOn(path_, problem_);
    ASSERT_TRUE(first);
    EXPECT_FALSE(listenOn(path_, problem_));
    EXPECT_NE(problem_.find(path_ + " is served by another process"), std::string::npos) << problem_;
    EXPECT_TRUE(isServed(path_));
}

TEST_F(SocketPath, ThatNobodyServesAnyMoreIsReplaced) {
    listenOn(path_, problem_).reset();
    EXPECT_FALSE(isServed(path_));
    EXPECT_TRUE(listenOn(path_, problem_)) << problem_;
}

TEST_F(SocketPath, OfAnOrdinaryFileIsRefused) {
    std::ofstream(path_) << "kept";
    EXPECT_FALSE(listenOn(path_, problem_));
    EXPECT_NE(problem_.find("cannot serve " + path_), std::string::npos) << problem_;
    EXPECT_TRUE(std::filesystem::is_regular_file(path_));
}

TEST_F(SocketPath, HasAtMostAsManyCharactersAsAnAddress) {
    const std::string longest = folder_ + "/" + std::string(kMaxSocketPath - folder_.size() - 1, 's');
    EXPECT_TRUE(listenOn(longest, problem_)) << problem_;
    EXPECT_FALSE(listenOn(longest + "s", problem_));
    EXPECT_NE(problem_.find("longer than 107 characters"), std::string::npos) << problem_;
}

}  // namespace
}  // namespace quorvel::common
