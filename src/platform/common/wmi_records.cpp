#include "platform/common/wmi_records.h"

#include "runtime/automation_error.h"
#include "runtime/convert.h"
#include "runtime/text.h"

namespace ostrel::platform {

namespace {

class RecordObject final : public WmiObject {
  public:
    explicit RecordObject(WmiRecord record) : record_(std::move(record)) {}
    Variant property(std::string_view name) override {
        for (const auto& [key, value] : record_.properties) {
            if (equalsText(key, name)) return value;
        }
        raise(kErrNoMember);  // as late binding fails on a member the class lacks
    }

  private:
    WmiRecord record_;
};

class RecordSet final : public WmiResultSet {
  public:
    explicit RecordSet(std::vector<WmiRecord> records) : records_(std::move(records)) {}
    int32_t count() override { return static_cast<int32_t>(records_.size()); }
    std::unique_ptr<WmiObject> next() override {
        if (next_ >= records_.size()) return nullptr;
        return std::make_unique<RecordObject>(std::move(records_[next_++]));
    }

  private:
    std::vector<WmiRecord> records_;
    std::size_t next_ = 0;
};

[[noreturn]] void invalidQuery() {
    raise(kWbemInvalidQuery, "Invalid query");
}

bool startsWithText(std::string_view text, std::string_view prefix) {
    return text.size() >= prefix.size() && equalsText(text.substr(0, prefix.size()), prefix);
}

std::string_view skipBlanks(std::string_view text) {
    while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
    return text;
}

// The word at the start of the text, up to a blank.
std::string_view firstWord(std::string_view text) {
    return text.substr(0, text.find(' '));
}

std::string_view unquoted(std::string_view value) {
    if (value.size() >= 2 && (value.front() == '"' || value.front() == '\'') &&
        value.back() == value.front()) {
        return value.substr(1, value.size() - 2);
    }
    return value;
}

}  // namespace

std::unique_ptr<WmiResultSet> recordResultSet(std::vector<WmiRecord> records) {
    return std::make_unique<RecordSet>(std::move(records));
}

std::unique_ptr<WmiResultSet> WmiRecordServices::execQuery(std::string_view query) {
    query = skipBlanks(query);
    if (startsWithText(query, "Select * from ")) {
        const std::string_view className = firstWord(skipBlanks(query.substr(14)));
        if (className.empty()) invalidQuery();
        WmiClassRecords records = source_(className);
        return records ? recordResultSet(std::move(*records)) : nullptr;
    }
    if (startsWithText(query, "Associators of ")) {
        // {CLASS.KEY=VALUE}
        std::string_view path = skipBlanks(query.substr(15));
        const std::size_t close = path.find('}');
        if (path.empty() || path.front() != '{' || close == std::string_view::npos) invalidQuery();
        path = path.substr(1, close - 1);
        const std::size_t dot = path.find('.');
        const std::size_t equals = path.find('=');
        if (dot == std::string_view::npos || equals == std::string_view::npos || equals < dot) {
            invalidQuery();
        }
        const std::string_view key = path.substr(dot + 1, equals - dot - 1);
        const std::string_view value = unquoted(path.substr(equals + 1));
        WmiClassRecords records = source_(path.substr(0, dot));
        if (!records) return recordResultSet({});
        for (WmiRecord& record : *records) {
            for (const auto& [name, property] : record.properties) {
                if (!equalsText(name, key) || property.isNull() || property.isObject()) continue;
                if (toText(property) != value) continue;
                if (!record.associated) return nullptr;
                return recordResultSet(std::move(*record.associated));
            }
        }
        return recordResultSet({});  // no such object: nothing is associated with it
    }
    invalidQuery();
}

}  // namespace ostrel::platform
