#include "live/Setup.h"

namespace desk {

namespace {

void putOptionalText(FrameWriter& frame, const std::optional<std::string>& text) {
    frame.put(text.has_value());
    if (text) {
        frame.putText(*text);
    }
}

std::optional<std::string> getOptionalText(FrameReader& reader) {
    return reader.get<bool>() ? std::optional(std::string(reader.getText())) : std::nullopt;
}

}  // namespace

void writeSetup(FrameWriter& frame, const Setup& setup) {
    frame.put(setup.isFollowed);
    frame.put(setup.hasLog);
    frame.put(setup.hasUlog);
    frame.put(setup.hasTrace);
    frame.put(setup.faults);
    frame.putText(setup.tuning.platform);
    putOptionalText(frame, setup.tuning.customer);
    putOptionalText(frame, setup.tuning.settings);
    frame.put(setup.properties.size());
    for (const auto& [name, value] : setup.properties) {
        frame.putText(name);
        frame.putText(value);
    }
}

Setup readSetup(std::string_view content) {
    FrameReader reader(content);
    Setup setup;
    setup.isFollowed = reader.get<bool>();
    setup.hasLog = reader.get<bool>();
    setup.hasUlog = reader.get<bool>();
    setup.hasTrace = reader.get<bool>();
    setup.faults = reader.get<InjectedFaults>();
    setup.tuning.platform = reader.getText();
    setup.tuning.customer = getOptionalText(reader);
    setup.tuning.settings = getOptionalText(reader);
    for (auto left = reader.get<size_t>(); left > 0; --left) {
        std::string name(reader.getText());
        setup.properties.emplace_back(std::move(name), reader.getText());
    }
    return setup;
}

}  // namespace desk
