#include "support/ScriptArguments.h"

#include <cstdlib>
#include <set>
#include <sstream>

namespace fake {
namespace {

Words split(const std::string& text, char separator) {
    Words parts(1);
    for (const char letter : text) {
        letter == separator ? parts.emplace_back() : parts.back() += letter;
    }
    return parts;
}

}  // namespace

Arguments::Arguments(const std::string& pattern, const Words& words) {
    std::set<std::string> names;
    std::istringstream forms(pattern);
    for (std::string form; forms >> form;) {
        if (form[0] == '[' && std::islower(form[1]) != 0) {
            names.insert(form.substr(1, form.find_first_of("=]") - 1));
        } else {
            mForms.push_back(form);
        }
    }
    for (const std::string& word : words) {
        const std::string name = word.substr(0, word.find('='));
        if (!names.contains(name)) {
            mWords.push_back(word);
        } else if (!mNamed.emplace(name, word.substr(std::min(word.size(), name.size() + 1)))
                            .second) {
            throw Mistake("a second '" + name + "'");
        }
    }
    const bool isOpen = !mForms.empty() && mForms.back().ends_with("...");
    if (count() > mForms.size() && !isOpen) {
        throw Mistake("unknown word '" + mWords[mForms.size()] + "'");
    }
    if (count() < mForms.size() && mForms[count()][0] != '[') {
        throw Mistake(mForms[count()] + " is missing");
    }
}

float Arguments::real(size_t i) const {
    char* end = nullptr;
    const float value = std::strtof(word(i).c_str(), &end);
    return *end == '\0' ? value : (refuse(mForms.at(i), word(i), "a number"), value);
}

size_t Arguments::choice(size_t i) const {
    const std::string& form = mForms.at(std::min(i, mForms.size() - 1));
    const Words known = split(form.substr(0, form.find("...")), '/');
    const auto found = std::find(known.begin(), known.end(), word(i));
    return found != known.end() ? static_cast<size_t>(found - known.begin())
                                : (refuse("word", word(i), form), 0);
}

void Arguments::set(const std::string& name, bool& flag) const {
    if (const auto given = mNamed.find(name); given != mNamed.end()) {
        flag = given->second.empty() ? true : (refuse(name, given->second, "no value"), false);
    }
}

void Arguments::set(const std::string& name, std::multimap<int32_t, int32_t>& values) const {
    for (const std::string& part : parts(name)) {
        const Words pair = split(part, ':');
        if (pair.size() != 2) {
            refuse(name, part, "TASK:N");
        }
        values.emplace(number<int32_t>(name, pair[0]), number<int32_t>(name, pair[1]));
    }
}

Words Arguments::parts(const std::string& name) const {
    const auto given = mNamed.find(name);
    return given == mNamed.end() ? Words() : split(given->second, ',');
}

void Arguments::refuse(const std::string& name, const std::string& text,
                       const std::string& expected) {
    throw Mistake(name + " is '" + text + "', expected " + expected);
}

}  // namespace fake
