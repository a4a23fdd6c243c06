// quorvel-wifi-web: serves the live page of a board. quorvel-wifi web starts it.
#include <CLI/CLI.hpp>
#include <fstream>
#include <iostream>
#include <iterator>

#include "web/server/http/Server.h"
#include "web/server/live/BoardFeed.h"
#include "web/server/metrics/Metrics.h"

namespace {

using namespace quorvel::web;

struct Options {
    std::string state;
    std::string share;
    std::string listen = "127.0.0.1:8181";
    std::string tokenFile;
    std::vector<std::string> hosts;
    bool stationMetrics = false;
};

std::string contents(const std::string& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

Address checkedAddress(const Options& options) {
    const std::optional<Address> address = parseAddress(options.listen);
    if (!address) {
        throw std::runtime_error("\"" + options.listen +
                                 "\" is not an address to listen on; give HOST:PORT with a numeric host, such as "
                                 "127.0.0.1:8181 or [::1]:8181");
    }
    if (!address->isLoopback() && options.tokenFile.empty()) {
        throw std::runtime_error(address->text() +
                                 " can be reached from other machines, so a token is needed: give --token-file FILE");
    }
    return *address;
}

int serve(const Options& options) {
    const Address wanted = checkedAddress(options);
    const std::string token = options.tokenFile.empty() ? "" : readToken(options.tokenFile);
    PageFiles page(options.share + "/page");

    Server server(wanted);
    BoardFeed* board = nullptr;
    const auto metrics = [&](const Picture& picture) {
        return metricsText({&picture}, server.counts(), {options.stationMetrics});
    };
    const Site site(Guard(server.address(), options.hosts, token), std::move(page),
                    {[&board] { return board->historyText(); }, metrics, contents(options.share + "/openapi.json")});
    server.show(Composer().picture());
    BoardFeed feed(options.state, [&](std::shared_ptr<const Picture> picture) {
        server.post([&server, picture = std::move(picture)] { server.show(picture); });
    });
    board = &feed;
    server.serve(site);

    server.stopAtSignals();
    std::cout << "http://" << server.address().text() << "/" << (token.empty() ? "" : "#token=" + token) << std::endl;
    server.run();
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    CLI::App app("Serves the live page of a board. quorvel-wifi web starts it.");
    app.add_option("--state", options.state, "State folder of the board")->required();
    app.add_option("--share", options.share, "Folder with page/ and openapi.json")->required();
    app.add_option("--listen", options.listen, "Address and port");
    app.add_option("--token-file", options.tokenFile, "File with the token that requests must carry");
    app.add_option("--allow-host", options.hosts, "Further Host name");
    app.add_flag("--metrics-stations", options.stationMetrics, "Metrics for each station");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : 2;
    }
    try {
        return serve(options);
    } catch (const std::exception& error) {
        std::cerr << "quorvel-wifi: " << error.what() << '\n';
        return 1;
    }
}
