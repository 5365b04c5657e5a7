#include "nodecheck/Report.h"

#include <fmt/format.h>

#include <iterator>

namespace nodecheck {

namespace {

uint64_t sumOf(const Report& report, Details Findings::*kind) {
    uint64_t sum = 0;
    for (const CheckResult& result : report.results) {
        sum += (result.findings.*kind).count;
    }
    return sum;
}

void writeDetails(std::string& text, const Details& details, const char* sign) {
    for (const std::string& detail : details.first) {
        fmt::format_to(std::back_inserter(text), "      {} {}\n", sign, detail);
    }
    if (details.count > details.first.size()) {
        fmt::format_to(std::back_inserter(text), "      {} {} in all\n", sign, details.count);
    }
}

const char* verdictOf(const Findings& findings) {
    return findings.failures.count > 0  ? "FAILED"
           : findings.lenient.count > 0 ? "lenient"
                                        : "passed";
}

}  // namespace

bool Report::isPassed() const {
    return sumOf(*this, &Findings::failures) == 0 &&
           (!isStrict || sumOf(*this, &Findings::lenient) == 0);
}

std::string formatResult(const CheckResult& result) {
    const Findings& findings = result.findings;
    std::string text = fmt::format("{:<8}{:<16}{:>9} commands  {}\n", verdictOf(findings),
                                   result.check->name, findings.commands, result.check->rule);
    writeDetails(text, findings.failures, "wrong:");
    writeDetails(text, findings.lenient, "taken:");
    return text;
}

std::string formatEnd(const Report& report) {
    return fmt::format("{}: {} wrong answers, {} lenient ones, seed {}{}\n",
                       report.isPassed() ? "passed" : "FAILED", sumOf(report, &Findings::failures),
                       sumOf(report, &Findings::lenient), report.settings.seed,
                       report.hasStateFile ? "" : "; no state file, judged by answers alone");
}

}  // namespace nodecheck
