#pragma once

#include <string>
#include <vector>

// The data model as a program that knows only the interface has it: read from DataModel.txt, with the names and places
// that follow from the interface's rules.
namespace quorvel::abi {

enum class Type { Text = 0, Boolean = 2, UnsignedNumber = 3, SignedNumber = 4 };

struct Object {
    std::string path;
    std::string prefix;
    unsigned entries = 0;
    unsigned contextSize = 0;
    unsigned depth = 0;  // instance levels of the path
};

struct Parameter {
    Object object;
    std::string name;
    Type type = Type::Text;
    bool writable = false;

    [[nodiscard]] bool readable() const;
    // Whether the table carries the getter: texts of depth 2 that are writable have their setter in its place.
    [[nodiscard]] bool readableByTable() const;
    [[nodiscard]] std::string getter() const;
    [[nodiscard]] std::string setter() const;
    [[nodiscard]] unsigned getterWord() const;
    [[nodiscard]] unsigned setterWord() const;

  private:
    [[nodiscard]] std::string stem() const;
};

struct DataModel {
    unsigned statedObjects = 0;
    unsigned statedParameters = 0;
    std::vector<Object> objects;
    std::vector<Parameter> parameters;
};

// Throws std::runtime_error with file and line for a list that cannot be read.
[[nodiscard]] DataModel readDataModel(const std::string& path);

struct ExportedObject {
    std::string name;
    unsigned words = 0;
    unsigned bytes = 0;
};

// Exports besides the front ends.
struct Exports {
    std::vector<std::string> functions;
    std::vector<ExportedObject> objects;
};

[[nodiscard]] Exports readExports(const std::string& path);

}  // namespace quorvel::abi
