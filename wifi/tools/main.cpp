// Prints the data model as a document, or writes it to a file.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>

#include "wifi/tools/Documents.h"

namespace {

constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;

int usage() {
    (void)std::fputs("usage: quorvel-data-model markdown|json [FILE]\n", stderr);
    return kWrongUsage;
}

int failed(const char* what, const char* file) {
    (void)std::fprintf(stderr, "quorvel-data-model: cannot %s %s: %s\n", what, file, std::strerror(errno));
    return kFailed;
}

}  // namespace

int main(int count, char** arguments) {
    if (count < 2 || count > 3) return usage();
    const std::string_view form = arguments[1];
    if (form != "markdown" && form != "json") return usage();
    const std::string document = form == "markdown" ? quorvel::model::markdown() : quorvel::model::json();

    const char* name = count == 3 ? arguments[2] : "standard output";
    std::FILE* file = count == 3 ? std::fopen(name, "w") : stdout;
    if (file == nullptr) return failed("create", name);
    const bool written = std::fwrite(document.data(), 1, document.size(), file) == document.size();
    // The last of it may fail only now.
    const bool closed = (file == stdout ? std::fflush(file) : std::fclose(file)) == 0;
    return written && closed ? 0 : failed("write", name);
}
