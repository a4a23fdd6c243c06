// quorvel-wifi-agent: a USP agent for a board that is up.
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <nlohmann/json.hpp>

#include "agent/config/CommandLine.h"
#include "agent/config/ConfigFile.h"
#include "agent/doctor/Doctor.h"
#include "agent/program/Runner.h"
#include "agent/program/Version.h"
#include "agent/scripted/Performance.h"

namespace quorvel::agent {
namespace {

Runner* running = nullptr;

enum ExitStatus : int { kDone = 0, kFailed = 1, kWrongUsage = 2 };

void onSignal(int /*number*/) {
    if (running != nullptr) running->stop();
}

// One line for the program that started this one, or for a person.
void report(int descriptor, const nlohmann::ordered_json& line) {
    const std::string text = line.dump() + "\n";
    (void)!write(descriptor, text.data(), text.size());  // nobody may be left to read it
}

// Two agents would share subscriptions and answer everything twice.
void takePlace(const std::string& folder) {
    if (mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) {
        throw ConfigError("cannot create the folder " + folder + ": " + std::strerror(errno));
    }
    const int file = open((folder + "/lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (file < 0 || flock(file, LOCK_EX | LOCK_NB) != 0) {
        throw ConfigError("another agent serves this board already (" + folder + "); end it first");
    }
    // The lock is held until the process ends.
}

int runAgent(const CommandLine& line, int reportTo) {
    const Config config = configFrom(line);
    const std::string folder = line.stateFolder + "/usp";
    takePlace(folder);
    writeConfig(config, folder + "/config.json");
    Runner runner(config);
    running = &runner;
    struct sigaction action {};
    action.sa_handler = onSignal;
    (void)sigaction(SIGTERM, &action, nullptr);
    (void)sigaction(SIGINT, &action, nullptr);
    (void)signal(SIGPIPE, SIG_IGN);
    runner.start();
    report(reportTo, {{"ready", true}, {"endpoint", runner.endpointId()}});
    if (reportTo > STDERR_FILENO) (void)close(reportTo);
    std::cerr << runner.run() << '\n';
    running = nullptr;
    return kDone;
}

int checkOnly(const CommandLine& line) {
    for (const std::string& warning : warningsFor(configFrom(line)))
        std::cout << "warning: " << warning << '\n';
    return kDone;
}

// For scenarios: no transport, no saved configuration, one controller.
int runScripted(CommandLine line, std::uint64_t seed, std::int64_t start) {
    line.urls = {"mqtt://127.0.0.1"};
    return perform(configFrom(line), seed, start);
}

// Whether every finding is good decides the exit status.
int runDoctor(const std::string& stateFolder, unsigned seconds, bool json) {
    Config config = readConfig(stateFolder + "/usp/config.json");
    config.stateFolder = stateFolder;
    const std::vector<Finding> findings = examine(config, std::chrono::seconds(seconds));
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    bool good = true;
    for (const Finding& finding : findings) {
        good = good && finding.isGood;
        list.push_back({{"good", finding.isGood}, {"subject", finding.subject}, {"text", finding.text}});
        if (!json)
            std::cout << (finding.isGood ? "ok    " : "WRONG ") << finding.subject << ": " << finding.text << '\n';
    }
    if (json) std::cout << nlohmann::ordered_json{{"findings", list}}.dump(2) << '\n';
    return good ? kDone : kFailed;
}

}  // namespace
}  // namespace quorvel::agent

int main(int argc, char** argv) {
    using namespace quorvel::agent;
    CLI::App app("A USP agent (TR-369) for a simulated gateway that is up.", "quorvel-wifi-agent");
    CommandLine line;
    line.version = kVersion;
    bool check = false;
    int reportTo = STDOUT_FILENO;
    CLI::Option* const state = app.add_option("--state", line.stateFolder, "state folder of the board");
    CLI::Option* const board = app.add_option("--board", line.boardFile, "the board's description");
    app.add_option("--usp", line.urls, "where to meet the controller")->take_all();
    app.add_option("--usp-endpoint", line.endpoint, "the agent's Endpoint ID");
    app.add_option("--usp-controller", line.controller, "the controller's Endpoint ID");
    app.add_option("--usp-topic", line.topic, "where the agent listens");
    app.add_option("--usp-controller-topic", line.controllerTopic, "where the controller listens");
    app.add_option("--usp-config", line.configFile, "a configuration as JSON");
    app.add_option("--usp-password-file", line.passwordFile, "a file with the brokers' password");
    app.add_option("--report", reportTo, "descriptor for the line that tells the start's outcome");
    app.add_flag("--check", check, "only check the configuration");
    unsigned seconds = 5;
    bool json = false;
    CLI::App* const doctor = app.add_subcommand("doctor", "find out why agent and controller do not hear each other");
    doctor->fallthrough();
    doctor->add_option("--seconds", seconds, "how long to listen for the controller");
    doctor->add_flag("--json", json, "print JSON");
    std::uint64_t seed = 1;
    std::int64_t start = 0;
    CLI::App* const scripted = app.add_subcommand("scripted", "serve the player of a scenario");
    scripted->fallthrough();
    scripted->add_option("--seed", seed, "seed of what varies by chance");
    scripted->add_option("--start", start, "the player's clock, in milliseconds");
    CLI11_PARSE(app, argc, argv);
    if (state->empty() || (!doctor->parsed() && board->empty())) {
        std::cerr << "--state FOLDER is needed, and --board FILE to start the agent\n";
        return kWrongUsage;
    }
    const char* password = std::getenv("QUORVEL_USP_PASSWORD");
    if (password != nullptr) line.password = password;
    (void)unsetenv("QUORVEL_USP_PASSWORD");
    try {
        if (doctor->parsed()) return runDoctor(line.stateFolder, seconds, json);
        if (scripted->parsed()) return runScripted(line, seed, start);
        return check ? checkOnly(line) : runAgent(line, reportTo);
    } catch (const ConfigError& error) {
        if (check || doctor->parsed()) {
            std::cerr << error.what() << '\n';
        } else {
            report(reportTo, {{"error", error.what()}});
        }
        return kWrongUsage;
    } catch (const std::exception& error) {
        report(reportTo, {{"error", error.what()}});
        return kFailed;
    }
}
