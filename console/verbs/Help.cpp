// help: the verbs, and what one of them takes.
#include <iostream>

#include "console/commandline/Help.h"
#include "console/commandline/NearestWord.h"
#include "console/session/Faults.h"
#include "console/verbs/Verbs.h"

namespace quorvel::console {
namespace {

int help(const Session& session, const CommandShape& program, const std::vector<std::string>& words) {
    const CommandShape* shape = &program;
    for (const std::string& word : words) {
        const CommandShape* const inner = shape->verb(word);
        if (inner == nullptr) {
            throw CLI::ValidationError("there is no verb \"" + word + "\"" + didYouMean(word, shape->verbNames()));
        }
        shape = inner;
    }
    if (session.options.json) {
        printJson(shapeAsJson(*shape), {});
    } else if (session.options.plain) {
        for (const CommandShape& verb : shape->verbs)
            std::cout << verb.name << '\t' << verb.description << '\n';
        for (const CommandShape::Option& option : shape->options)
            std::cout << option.name << '\t' << option.description << '\n';
    } else if (words.empty()) {
        std::cout << programHelp(program, session.outStyle(), session.interactive);
    } else {
        std::cout << verbHelp(program, words, session.outStyle(), session.interactive);
    }
    return kDone;
}

}  // namespace

void addHelpVerb(VerbContext& context) {
    Session& session = context.session;
    auto words = std::make_shared<std::vector<std::string>>();
    CLI::App* const verb = context.add(
        kManyVerbs, "help", "Show the verbs, or one verb with examples", "help\nhelp get\nhelp station join",
        [&session, words, shape = context.shape] { return help(session, shape(), *words); });
    context.take(verb, ArgumentKind::kVerb, "VERB", *words, "A verb, e.g. get or station join");
}

}  // namespace quorvel::console
