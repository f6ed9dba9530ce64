// The application's side of the guide's driver (my_driver.cpp), with the
// driver and the consumer's "MessageService" in the folder "plugins" beside
// this program: the manager finds and connects the device, and a press of
// its button reaches a callback through InstrumentEvents_V1.

#include <qvimanager/qvimanager.h>

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <memory>
#include <mutex>

namespace {

struct Presses {
    std::mutex guard;
    std::condition_variable arrived;
    long count = 0;
};

class OnButton : public Utilities::CallbackImplementation {
public:
    explicit OnButton(std::shared_ptr<Presses> into) : presses(std::move(into)) {}
    long Execute(const Utilities::Anything&) override
    {
        const std::lock_guard<std::mutex> hold(presses->guard);
        ++presses->count;
        presses->arrived.notify_all();
        return 0;
    }
    bool IsValid() const override
    {
        return true;
    }

private:
    std::shared_ptr<Presses> presses;
};

} // namespace

int main()
{
    try {
        auto manager = Utilities::Resolve<QVIManager::QVIInstrumentManager>("QVIInstrumentManager");
        manager->FindAllInstruments();
        auto devices = manager->GetListOfConnectedInstruments();
        auto instrument = (*devices)[Utilities::String("MyDriver_4711")];
        if (devices->GetCount() != 1 || !instrument.IsValid()) {
            std::printf("consumer instruments: MyDriver_4711 not found\n");
            return 1;
        }
        auto presses = std::make_shared<Presses>();
        QVIManager::InstrumentEvents_V1 events(Utilities::DynamicCast<Utilities::Component>(instrument));
        events.RegisterCallback("Button", Utilities::Callback(Utilities::SmartPointer<Utilities::CallbackImplementation>(
                                              new OnButton(presses))));
        {
            // The device is pressed at its third question: the second poll.
            std::unique_lock<std::mutex> hold(presses->guard);
            if (!presses->arrived.wait_for(hold, std::chrono::seconds(30), [&] { return presses->count > 0; })) {
                std::printf("consumer instruments: no button event\n");
                return 1;
            }
        }
        events.UnregisterCallback("Button");
        events.StopPolling();
    } catch (const Utilities::Exception& failure) {
        std::printf("consumer instruments: %s\n", failure.GetExceptionText().GetCharPointer());
        return 1;
    }
    std::printf("consumer instruments: ok\n");
    return 0;
}
