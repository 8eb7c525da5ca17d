#include "thread_rules.h"

#include <fstream>
#include <iterator>
#include <regex>

namespace exports {
namespace {

/** visit(match) for all matches of a pattern. */
template <typename Visit>
void forEachMatch(const std::string& text, const std::string& pattern, Visit visit) {
    const std::regex expression(pattern);
    for (std::sregex_iterator match(text.begin(), text.end(), expression); match != std::sregex_iterator(); ++match)
        visit(*match);
}

/** The rule in words such as "256 x 256 pixels" or "16384 pixels for each configured thread"; else one thread. */
ThreadRule ruleOf(const std::string& words) {
    std::smatch match;
    if (!std::regex_search(words, match, std::regex("([0-9]+)( x [0-9]+)? pixels( for each configured thread)?")))
        return {};
    const int64_t number = std::stoll(match[1]);
    if (match[2].matched)
        return {number * number, false, int32_t(number)};
    return {number, match[3].matched, 0};
}

}  // namespace

std::map<std::string, ThreadRule> threadRules(const std::string& headerFile) {
    std::ifstream file(headerFile);
    const std::string header{std::istreambuf_iterator<char>(file), {}};
    const std::string oneLine = std::regex_replace(header, std::regex("\\s+(\\* )?\\s*"), " ");
    std::map<std::string, ThreadRule> rules;
    for (size_t begin = oneLine.find("@defgroup "); begin != oneLine.npos;) {
        const size_t end = oneLine.find("@defgroup ", begin + 1);
        const std::string family = oneLine.substr(begin, end - begin);
        std::smatch match;
        if (std::regex_search(family, match,
                              std::regex("(Regions|Windows) of [^.:;]* and more are shared among the threads|"
                                         "The calling thread does all the work")))
            forEachMatch(family, "VEKCV_CALL (\\w+)\\(", [&, rule = ruleOf(match[0])](const std::smatch& declaration) {
                rules[declaration[1]] = rule;
            });
        const std::string exceptions = "- (the calling thread alone|[0-9]+ pixels[^:.;]*): (veki[\\w, ]*)[;.]";
        forEachMatch(family, exceptions, [&](const std::smatch& exception) {
            forEachMatch(exception[2], "\\w+",
                         [&, rule = ruleOf(exception[1])](const std::smatch& name) { rules.at(name[0]) = rule; });
        });
        begin = end;
    }
    return rules;
}

}  // namespace exports
