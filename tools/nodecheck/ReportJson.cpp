#include "nodecheck/Report.h"

// Header-only, but not every platform tree has it.
#if __has_include(<nlohmann/json.hpp>)

#include <nlohmann/json.hpp>

namespace nodecheck {

namespace {

using nlohmann::ordered_json;

ordered_json detailsToJson(const Details& details) {
    return {{"count", details.count}, {"first", details.first}};
}

}  // namespace

const bool kHasJson = true;

std::string formatJson(const Report& report) {
    ordered_json body = {{"node", VELK_NODE_PATH},
                         {"seed", report.settings.seed},
                         {"strict", report.isStrict},
                         {"stateFile", report.hasStateFile},
                         {"passed", report.isPassed()}};
    body["checks"] = ordered_json::array();
    for (const CheckResult& result : report.results) {
        body["checks"].push_back({{"name", result.check->name},
                                  {"rule", result.check->rule},
                                  {"commands", result.findings.commands},
                                  {"wrong", detailsToJson(result.findings.failures)},
                                  {"lenient", detailsToJson(result.findings.lenient)}});
    }
    return body.dump();
}

}  // namespace nodecheck

#else

namespace nodecheck {

const bool kHasJson = false;

std::string formatJson(const Report&) {
    return "";
}

}  // namespace nodecheck

#endif
