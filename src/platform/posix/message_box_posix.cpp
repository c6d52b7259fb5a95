#include <cstdio>
#include <string>

#include "platform/adapters.h"

namespace ostrel::platform {

namespace {

// No desktop to show a box on: the text goes to stderr, after its title if it has one.
class StderrMessageBox final : public MessageBoxPort {
  public:
    void show(std::string_view text, int32_t /*style*/, std::string_view title) override {
        std::string line;
        if (!title.empty()) {
            line += title;
            line += ": ";
        }
        line += text;
        line += '\n';
        std::fwrite(line.data(), 1, line.size(), stderr);
        std::fflush(stderr);
    }
};

}  // namespace

MessageBoxPort& systemMessageBox() {
    static StderrMessageBox box;
    return box;
}

}  // namespace ostrel::platform
