#include "gateway/hostd/client/BoardSocket.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>

namespace quorvel::hostd {
namespace {

class BoardSockets : public testing::Test {
  protected:
    BoardSockets() {
        std::string name = (std::filesystem::temp_directory_path() / "quorvel-socket-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no folder");
        // Longer than the path of a socket may be.
        top_ = name;
        folder_ = top_ / std::string(100, 'a');
        std::filesystem::create_directory(folder_);
    }
    ~BoardSockets() override {
        std::filesystem::remove_all(top_);
    }

    std::filesystem::path top_;
    std::filesystem::path folder_;
};

TEST_F(BoardSockets, AreTheirUsersAlone) {
    std::string problem;
    const common::Descriptor listening = listenForClients(folder_, problem);
    ASSERT_TRUE(listening) << problem;
    struct stat status {};
    ASSERT_EQ(lstat((folder_ / kBoardSocket).c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

TEST_F(BoardSockets, TakeClientsWhateverTheLengthOfTheirPath) {
    EXPECT_FALSE(connectToBoard(folder_));
    std::string problem;
    {
        const common::Descriptor listening = listenForClients(folder_, problem);
        ASSERT_TRUE(listening) << problem;
        EXPECT_TRUE(connectToBoard(folder_));
        EXPECT_FALSE(listenForClients(folder_, problem));
        EXPECT_NE(problem, "");
    }
    // A board replaces a socket that was left behind.
    EXPECT_FALSE(connectToBoard(folder_));
    EXPECT_TRUE(listenForClients(folder_, problem));
    removeBoardSocket(folder_);
    EXPECT_FALSE(std::filesystem::exists(folder_ / kBoardSocket));
    EXPECT_FALSE(listenForClients(folder_ / "nowhere", problem));
}

}  // namespace
}  // namespace quorvel::hostd
