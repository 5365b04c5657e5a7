#include "report/RecordJson.h"

#include <nlohmann/json.hpp>
#include <string>

namespace desk {

using nlohmann::ordered_json;

ordered_json recordToJson(const VELKCommand& command, const void* record) {
    ordered_json fields = ordered_json::object();
    visitRecord(command, record, [&fields](const FieldValue& field) {
        if (field.isReserved()) {
            return;
        }
        ordered_json& value = fields[std::string(field.name())];
        if (field.isText()) {
            value = field.text();
        } else if (field.isArray()) {
            value = ordered_json::array();
            for (size_t i = 0; i < field.size(); ++i) {
                value.push_back(field.number(i));
            }
        } else {
            value = field.number();
        }
    });
    return fields;
}

}  // namespace desk
