#include "tests/abi/PlainDataModel.h"

#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>

namespace quorvel::abi {

namespace {

Type typeOf(char letter) {
    switch (letter) {
        case 's':
            return Type::Text;
        case 'b':
            return Type::Boolean;
        case 'u':
            return Type::UnsignedNumber;
        case 'i':
            return Type::SignedNumber;
        default:
            throw std::runtime_error(std::string("no type is called ") + letter);
    }
}

unsigned depthOf(const std::string& path) {
    unsigned depth = 0;
    for (std::size_t at = path.find("{i}"); at != std::string::npos; at = path.find("{i}", at + 1))
        ++depth;
    return depth;
}

// Calls `take` with the words of each line that is neither empty nor a comment.
template <typename Take>
void readLines(const std::string& path, const Take& take) {
    std::ifstream file(path);
    if (!file) throw std::runtime_error("cannot open " + path);
    std::string line;
    for (unsigned number = 1; std::getline(file, line); ++number) {
        if (line.empty() || line[0] == '#') continue;
        std::istringstream words(line);
        std::string first;
        words >> first;
        try {
            take(first, words);
        } catch (const std::runtime_error& error) {
            throw std::runtime_error(path + ":" + std::to_string(number) + ": " + error.what());
        }
    }
}

}  // namespace

std::string Parameter::stem() const {
    // One parameter's functions do not repeat its name's beginning.
    if (object.prefix == "WiFiRadio" && name == "RadioChannelStats") return "WiFiRadioChannelStats";
    return object.prefix + name;
}

bool Parameter::readable() const {
    return !(object.prefix == "WiFiRadio" && name == "pushRadioChannel2");
}

bool Parameter::readableByTable() const {
    return readable() && !(object.depth == 2 && type == Type::Text && writable);
}

std::string Parameter::getter() const {
    return stem() + "Get";
}

std::string Parameter::setter() const {
    return stem() + "Set";
}

unsigned Parameter::getterWord() const {
    const auto code = static_cast<unsigned>(type);
    return object.depth == 2 ? 55 + code : 6 + 2 * code + object.depth;
}

unsigned Parameter::setterWord() const {
    if (object.depth < 2) return 39 + 2 * static_cast<unsigned>(type) + object.depth;
    // No rule: what hosts look up.
    static const std::map<std::string, unsigned> places = {
        {"WiFiAccessPointACAliasSet", 55},
        {"WiFiAccessPointACAIFSNSet", 65},
        {"WiFiAccessPointACECWMinSet", 65},
        {"WiFiAccessPointACECWMaxSet", 65},
        {"WiFiAccessPointACTxOpMaxSet", 65},
        {"WiFiAccessPointACAckPolicySet", 59},
        {"WiFiAirtimeSchedulerStationsListMacAddressSet", 55},
        {"WiFiAirtimeSchedulerStationsListSchedulingTypeSet", 61},
        {"WiFiAirtimeSchedulerStationsListVideoPrioritySet", 61},
    };
    return places.at(setter());
}

DataModel readDataModel(const std::string& path) {
    DataModel model;
    readLines(path, [&model](const std::string& first, std::istringstream& words) {
        if (first == "model") {
            if (!(words >> model.statedObjects >> model.statedParameters)) {
                throw std::runtime_error("a model has a number of objects and a number of parameters");
            }
            return;
        }
        if (first == "object") {
            Object object;
            if (!(words >> object.path >> object.prefix >> object.entries >> object.contextSize)) {
                throw std::runtime_error("an object has a path, a prefix, a number of entries and a context size");
            }
            object.depth = depthOf(object.path);
            model.objects.push_back(object);
            return;
        }
        char type = '\0';
        if (model.objects.empty() || !(words >> type)) {
            throw std::runtime_error("a parameter stands below an object and has a name and a type");
        }
        std::string mark;
        words >> mark;
        model.parameters.push_back({model.objects.back(), first, typeOf(type), mark == "w"});
    });
    return model;
}

Exports readExports(const std::string& path) {
    Exports exports;
    readLines(path, [&exports](const std::string& first, std::istringstream& words) {
        ExportedObject object;
        words >> object.name;
        if (first == "function" && !object.name.empty()) {
            exports.functions.push_back(object.name);
        } else if (first == "object" && words >> object.words >> object.bytes) {
            exports.objects.push_back(object);
        } else {
            throw std::runtime_error("expected function NAME or object NAME WORDS BYTES");
        }
    });
    return exports;
}

}  // namespace quorvel::abi
