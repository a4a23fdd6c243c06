#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// The data model as the host sees it (DataModelRows.inc), with calls of each function by its row.
namespace quorvel::datamodel {

enum class Type { String, Boolean, UnsignedInt, Int };
enum class Access { ReadOnly, ReadWrite, WriteOnly, AtOnce, Commit, Station };

using Function = void (*)();

struct Object {
    const char* prefix;
    const char* path;
    int depth;
    std::uint32_t contextSize;
    std::uint32_t nodeLimit;
    std::uint32_t (*initContext)(void* ctx);
    std::uint32_t (*checkContextNodeSet)(void* ctx, std::uint32_t node);
    Function applyContext;
    Function instanceGet;

    [[nodiscard]] std::string function(const char* suffix) const {
        return std::string(prefix) + suffix;
    }
    // The front end's source path as log lines give it.
    [[nodiscard]] std::string file() const {
        return "wifi/Quorvel" + std::string(prefix);
    }
    // With instances (1, 1); applying RadioStats does not scan.
    [[nodiscard]] std::uint32_t apply(void* ctx) const;
    [[nodiscard]] std::uint32_t snapshot(void* ctx) const;
};

struct Parameter {
    const char* prefix;
    int depth;
    std::uint32_t node;
    const char* name;
    const char* stem;
    Type type;
    Access access;
    std::uint32_t capacity;
    std::uint32_t low;
    std::uint32_t high;
    Function getter;  // null when there is none
    Function setter;

    [[nodiscard]] const Object& object() const;
    // Whether its setter only stages the value in the context.
    [[nodiscard]] bool staged() const {
        return access == Access::ReadWrite || access == Access::WriteOnly;
    }
    // Bytes of its field.
    [[nodiscard]] std::uint32_t width() const;
    // Its field's offset from the start of the context: fields follow in node order, numbers on 4-byte boundaries.
    [[nodiscard]] std::size_t offset() const;
    [[nodiscard]] std::string getterName() const {
        return std::string(stem) + "Get";
    }
    [[nodiscard]] std::string setterName() const {
        return std::string(stem) + "Set";
    }
    // Calls the getter for instances (i, j) as far as its depth has them; `len` is for texts.
    [[nodiscard]] std::uint32_t get(std::uint32_t i, std::uint32_t j, void* out, std::uint32_t len) const;
    [[nodiscard]] std::uint32_t setNumber(void* ctx, std::uint32_t value, std::uint32_t i = 1,
                                          std::uint32_t j = 1) const;
    [[nodiscard]] std::uint32_t setText(void* ctx, const char* text, std::uint32_t len, std::uint32_t i = 1,
                                        std::uint32_t j = 1) const;
};

[[nodiscard]] const std::vector<Object>& objects();
[[nodiscard]] const std::vector<Parameter>& parameters();
[[nodiscard]] const Parameter& parameter(const std::string& stem);
// The parameters of an object in node order.
[[nodiscard]] std::vector<Parameter> parametersOf(const std::string& prefix);

}  // namespace quorvel::datamodel
