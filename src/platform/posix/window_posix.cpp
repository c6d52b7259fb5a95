// No desktop to show a window on: the resolution is the usual 96 dots per
// inch (what `ostrel about --json` converts with), and showing a window
// raises 429 as for a service that can't be created.
#include "platform/adapters.h"
#include "runtime/automation_error.h"

namespace ostrel::platform {

namespace {

class NoWindowing final : public WindowPort {
  public:
    int32_t dotsPerInch() override { return 96; }
    void showModal(const Form&, int64_t, const ClickHandler&) override {
        raise(kErrCantCreate, "The window can only be shown on Windows");
    }
};

}  // namespace

WindowPort& systemWindowing() {
    static NoWindowing windowing;
    return windowing;
}

}  // namespace ostrel::platform
