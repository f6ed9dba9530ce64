// QVIInstrumentManager with test drivers and "Preferences" stores added as
// plug-ins: the drivers found once, a pooled instance per device key, the
// bare-text refusal of a device without serial number, the recent
// instrument with both baud-rate spellings, disconnect and unload.

#include "qvimanager/components/naming_service.h"
#include "qvimanager/components/resolve.h"
#include "qvimanager/foundation/exception.h"
#include "qvimanager/instruments/instrument_manager.h"
#include "tests/components/load_test_plugin.h"
#include "tests/plugins/instrument_probe.h"
#include "tests/support/failure_text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

using QVIManager::QVIInstrument;
using QVIManager::QVIInstrumentManager;
using TestPlugins::InstrumentProbe;
using TestPlugins::LoadTestPlugin;
using TestPlugins::PreferencesProbe;
using TestSupport::FailureText;
using Utilities::Anything;
using Utilities::DynamicCast;
using Utilities::ExceptionNullpointer;
using Utilities::List;
using Utilities::Map;
using Utilities::MapIterator;
using Utilities::Resolve;
using Utilities::SmartPointer;
using Utilities::String;

using InstrumentMap = QVIInstrumentManager::InstrumentMap;
using DeviceMap = QVIInstrumentManager::DeviceMap;

SmartPointer<QVIInstrumentManager> Manager()
{
    return Resolve<QVIInstrumentManager>(String("QVIInstrumentManager"));
}

std::vector<std::string> Keys(const InstrumentMap& instruments)
{
    std::vector<std::string> keys;
    for (MapIterator<String, SmartPointer<QVIInstrument>> entry = instruments.Begin(); entry.IsValid(); entry++) {
        keys.push_back(entry.GetKey().GetCharPointer());
    }
    return keys;
}

SmartPointer<InstrumentProbe> Probe(const SmartPointer<QVIInstrument>& instrument)
{
    return DynamicCast<InstrumentProbe>(instrument);
}

SmartPointer<InstrumentProbe> Connected(const SmartPointer<QVIInstrumentManager>& manager, const char* key)
{
    return Probe((*manager->GetListOfConnectedInstruments())[String(key)]);
}

std::string Stored()
{
    SmartPointer<PreferencesProbe> store = Resolve<PreferencesProbe>(String("Preferences"));
    return store.IsValid() ? store->Contents() : "(no store)";
}

// The text of the bare text thrown by `call`, or "no exception".
template <typename Call>
std::string BareText(Call call)
{
    try {
        call();
    } catch (const char* text) {
        return text;
    }
    return "no exception";
}

// ---------------------------------------------------------------- the component

TEST(InstrumentManager, IsTheLibrarysSingletonComponent)
{
    Utilities::NamingServiceIterator entry = Utilities::NamingService::Instance()->GetNamingServiceIterator(
        String("name"), Anything("QVIInstrumentManager"));
    ASSERT_TRUE(entry.IsValid());
    EXPECT_STREQ("$Revision: 1.4 $", entry.Current()[String("version")].GetString().GetCharPointer());
    EXPECT_STREQ("QVIManager", entry.Current()[String("category")].GetString().GetCharPointer());
    SmartPointer<QVIInstrumentManager> first = Manager();
    ASSERT_TRUE(first.IsValid());
    EXPECT_EQ(&*first, &*Manager());
    EXPECT_STREQ("QVIInstrumentManager: 0 driver(s), not searched", first->GetValueString().c_str());
}

TEST(InstrumentManager, DriversAreListedOnceInDescriptorOrder)
{
    LoadTestPlugin("driver_two_devices");
    LoadTestPlugin("driver_no_finder");
    SmartPointer<QVIInstrumentManager> manager = Manager();
    LoadTestPlugin("driver_serial_less");
    SmartPointer<List<String>> drivers = manager->GetListOfInstrumentDrivers();
    ASSERT_EQ(2UL, drivers->GetItemCount());
    EXPECT_STREQ("TwoDeviceDriver", drivers->Begin().Current().GetCharPointer());
    // The manager's own list, shared.
    drivers->Append(String("Added"));
    EXPECT_EQ(3UL, manager->GetListOfInstrumentDrivers()->GetItemCount());
}

// ---------------------------------------------------------------- the search

TEST(InstrumentManager, SearchConnectsEveryDeviceWithAnInstanceOfItsOwn)
{
    LoadTestPlugin("driver_no_finder");
    LoadTestPlugin("driver_two_devices");
    SmartPointer<QVIInstrumentManager> manager = Manager();
    manager->FindAllInstruments();
    SmartPointer<InstrumentMap> instruments = manager->GetListOfConnectedInstruments();
    std::vector<std::string> keys = Keys(*instruments);
    std::sort(keys.begin(), keys.end());
    EXPECT_EQ((std::vector<std::string>{"TwoDeviceDriver_1001", "TwoDeviceDriver_1002"}), keys);
    SmartPointer<InstrumentProbe> first = Connected(manager, "TwoDeviceDriver_1001");
    SmartPointer<InstrumentProbe> second = Connected(manager, "TwoDeviceDriver_1002");
    ASSERT_TRUE(first.IsValid());
    ASSERT_TRUE(second.IsValid());
    EXPECT_NE(&*first, &*second);
    EXPECT_EQ("1001", first->Parameter("SerialNumber"));
    EXPECT_EQ("1002", second->Parameter("SerialNumber"));
    EXPECT_EQ(1, first->TimesParameterised());
    EXPECT_EQ(1, first->TimesConnected());
    EXPECT_STREQ("QVIInstrumentManager: 2 driver(s), 2 device(s) connected", manager->GetValueString().c_str());
}

TEST(InstrumentManager, SecondSearchDropsTheInstrumentsAndConnectsAfresh)
{
    LoadTestPlugin("driver_two_devices");
    SmartPointer<QVIInstrumentManager> manager = Manager();
    SmartPointer<InstrumentMap> shared = manager->GetListOfConnectedInstruments();
    SmartPointer<InstrumentProbe> before = Connected(manager, "TwoDeviceDriver_1001");
    manager->FindAllInstruments();
    // The pool of the device key keeps its instance, connected once more.
    SmartPointer<InstrumentProbe> after = Connected(manager, "TwoDeviceDriver_1001");
    EXPECT_EQ(&*before, &*after);
    EXPECT_EQ(2, after->TimesConnected());
    EXPECT_EQ(2UL, shared->GetCount());
}

TEST(InstrumentManager, ListOfConnectedInstrumentsSearchesFirstOnlyOnce)
{
    LoadTestPlugin("driver_two_devices");
    SmartPointer<QVIInstrumentManager> manager = Manager();
    SmartPointer<InstrumentMap> first = manager->GetListOfConnectedInstruments();
    SmartPointer<InstrumentMap> second = manager->GetListOfConnectedInstruments();
    EXPECT_TRUE(first == second);
    EXPECT_EQ(1, Connected(manager, "TwoDeviceDriver_1002")->TimesConnected());
}

TEST(InstrumentManager, DeviceWithoutSerialNumberStopsTheSearchWithABareText)
{
    LoadTestPlugin("driver_two_devices");
    LoadTestPlugin("driver_serial_less");
    SmartPointer<QVIInstrumentManager> manager = Manager();
    EXPECT_EQ("Incorrect device- map", BareText([&] { manager->FindAllInstruments(); }));
    // The devices of the driver before stay connected.
    EXPECT_EQ(2UL, manager->GetListOfConnectedInstruments()->GetCount());
}

// ---------------------------------------------------------------- the recent instrument

TEST(InstrumentManager, UsedInstrumentIsStoredWithTheLowerCaseBaudRateKey)
{
    LoadTestPlugin("driver_two_devices");
    LoadTestPlugin("preferences_case");
    SmartPointer<QVIInstrumentManager> manager = Manager();
    manager->SetUsedInstrument((*manager->GetListOfConnectedInstruments())[String("TwoDeviceDriver_1001")]);
    EXPECT_EQ("QVIInstrumentManager/RecentUsed=Sim A_1001\n"
              "QVIInstrumentManager/RUDriver=TwoDeviceDriver\n"
              "QVIInstrumentManager/RUTransport=USB\n"
              "QVIInstrumentManager/RUPort=usb-Sim A\n"
              "QVIInstrumentManager/RUbaudrate=9600\n",
              Stored());
}

TEST(InstrumentManager, InstrumentsNotConnectedAreNotStored)
{
    LoadTestPlugin("driver_two_devices");
    LoadTestPlugin("preferences_case");
    SmartPointer<QVIInstrumentManager> manager = Manager();
    // Before a search.
    manager->SetUsedInstrument(Resolve<QVIInstrument>(String("TwoDeviceDriver")));
    manager->FindAllInstruments();
    manager->SetUsedInstrument(Resolve<QVIInstrument>(String("TwoDeviceDriver")));
    manager->SetUsedInstrument(SmartPointer<QVIInstrument>());
    manager->SetUsedInstrument(String("TwoDeviceDriver_1001"));
    manager->DisconnectInstrument(String("TwoDeviceDriver_1002"));
    manager->SetUsedInstrument(SmartPointer<QVIInstrument>());
    EXPECT_EQ("", Stored());
}

TEST(InstrumentManager, WithoutPreferencesTheRecentInstrumentThrows)
{
    LoadTestPlugin("driver_two_devices");
    SmartPointer<QVIInstrumentManager> manager = Manager();
    SmartPointer<QVIInstrument> used = (*manager->GetListOfConnectedInstruments())[String("TwoDeviceDriver_1001")];
    EXPECT_EQ("Failed to access to nullpointer.",
              FailureText<ExceptionNullpointer>([&] { manager->SetUsedInstrument(used); }));
    DeviceMap unused;
    EXPECT_EQ("Failed to access to nullpointer.",
              FailureText<ExceptionNullpointer>([&] { manager->GetRecentUsedInstrument(unused); }));
}

TEST(InstrumentManager, NothingStoredGivesNoRecentInstrument)
{
    LoadTestPlugin("driver_two_devices");
    LoadTestPlugin("preferences_no_case");
    DeviceMap unused;
    EXPECT_FALSE(Manager()->GetRecentUsedInstrument(unused).IsValid());
}

// The recent instrument after the first device was used, with the store
// `store`.
SmartPointer<InstrumentProbe> RecentAfterUse(const char* store, DeviceMap& callers)
{
    LoadTestPlugin("driver_two_devices");
    LoadTestPlugin(store);
    SmartPointer<QVIInstrumentManager> manager = Manager();
    manager->SetUsedInstrument((*manager->GetListOfConnectedInstruments())[String("TwoDeviceDriver_1001")]);
    return Probe(manager->GetRecentUsedInstrument(callers));
}

TEST(InstrumentManager, RecentInstrumentComesBackConnectedWithTheStoredParameters)
{
    DeviceMap callers;
    SmartPointer<InstrumentProbe> recent = RecentAfterUse("preferences_no_case", callers);
    ASSERT_TRUE(recent.IsValid());
    EXPECT_EQ("Sim A_1001", recent->Parameter("Name"));
    EXPECT_EQ("TwoDeviceDriver", recent->Parameter("Driver"));
    EXPECT_EQ("USB", recent->Parameter("Transport"));
    EXPECT_EQ("usb-Sim A", recent->Parameter("Port"));
    // A store that ignores case finds "RUbaudrate" under "RUBaudRate".
    EXPECT_EQ("9600", recent->Parameter("BaudRate"));
    EXPECT_EQ("(none)", recent->Parameter("SerialNumber"));
    EXPECT_EQ(1, recent->TimesConnected());
    // Not one of the connected instances, and not among them.
    EXPECT_NE(&*Connected(Manager(), "TwoDeviceDriver_1001"), &*recent);
    EXPECT_EQ(2UL, Manager()->GetListOfConnectedInstruments()->GetCount());
    EXPECT_EQ(0UL, callers.GetCount());
}

TEST(InstrumentManager, StoreThatRespectsCaseGivesNoBaudRateBack)
{
    DeviceMap callers;
    SmartPointer<InstrumentProbe> recent = RecentAfterUse("preferences_case", callers);
    ASSERT_TRUE(recent.IsValid());
    EXPECT_EQ("", recent->Parameter("BaudRate"));
}

TEST(InstrumentManager, CallersMapIsNeitherReadNorWritten)
{
    DeviceMap callers;
    callers[String("Driver")] = String("NoSuchDriver");
    SmartPointer<InstrumentProbe> recent = RecentAfterUse("preferences_no_case", callers);
    EXPECT_TRUE(recent.IsValid());
    EXPECT_EQ(1UL, callers.GetCount());
    EXPECT_STREQ("NoSuchDriver", callers[String("Driver")].GetCharPointer());
}

TEST(InstrumentManager, UsingTheRecentInstrumentStoresNothing)
{
    DeviceMap callers;
    SmartPointer<InstrumentProbe> recent = RecentAfterUse("preferences_case", callers);
    const std::string before = Stored();
    Manager()->SetUsedInstrument(Utilities::DynamicCast<QVIInstrument>(recent));
    EXPECT_EQ(before, Stored());
}

TEST(InstrumentManager, RecentDeviceOfADriverThatIsGoneGivesNothing)
{
    LoadTestPlugin("driver_two_devices");
    LoadTestPlugin("preferences_no_case");
    SmartPointer<PreferencesProbe> store = Resolve<PreferencesProbe>(String("Preferences"));
    store->SetValue(String("QVIInstrumentManager"), String("RecentUsed"), String("Sim A_1001"));
    store->SetValue(String("QVIInstrumentManager"), String("RUDriver"), String("RemovedDriver"));
    DeviceMap callers;
    EXPECT_FALSE(Manager()->GetRecentUsedInstrument(callers).IsValid());
    // Nor one without a driver at all.
    store->SetValue(String("QVIInstrumentManager"), String("RUDriver"), String(""));
    EXPECT_FALSE(Manager()->GetRecentUsedInstrument(callers).IsValid());
}

TEST(InstrumentManager, UnavailableRecentDeviceGivesNothing)
{
    setenv("QVI_TEST_AVAILABLE", "no", 1);
    DeviceMap callers;
    EXPECT_FALSE(RecentAfterUse("preferences_no_case", callers).IsValid());
}

TEST(InstrumentManager, FailureWhileCheckingTheRecentDeviceIsSwallowed)
{
    setenv("QVI_TEST_AVAILABLE", "throw", 1);
    DeviceMap callers;
    EXPECT_FALSE(RecentAfterUse("preferences_no_case", callers).IsValid());
}

// ---------------------------------------------------------------- disconnect and unload

TEST(InstrumentManager, DisconnectAndUnloadBeforeASearchThrow)
{
    SmartPointer<QVIInstrumentManager> manager = Manager();
    EXPECT_EQ("Failed to dereference nullpointer.",
              FailureText<ExceptionNullpointer>([&] { manager->DisconnectInstrument(String("x")); }));
    EXPECT_EQ("Failed to dereference nullpointer.",
              FailureText<ExceptionNullpointer>([&] { manager->PrepareForUnload(); }));
}

TEST(InstrumentManager, DisconnectLetsGoOfTheInstrumentAndKeepsTheKey)
{
    LoadTestPlugin("driver_two_devices");
    SmartPointer<QVIInstrumentManager> manager = Manager();
    SmartPointer<InstrumentMap> instruments = manager->GetListOfConnectedInstruments();
    manager->DisconnectInstrument(String("TwoDeviceDriver_1001"));
    EXPECT_FALSE((*instruments)[String("TwoDeviceDriver_1001")].IsValid());
    EXPECT_TRUE((*instruments)[String("TwoDeviceDriver_1002")].IsValid());
    EXPECT_EQ(2UL, instruments->GetCount());
    manager->DisconnectInstrument(String("Unknown_1"));
    EXPECT_EQ(3UL, instruments->GetCount());
    EXPECT_FALSE(instruments->Find(String("Unknown_1")).GetValue().IsValid());
}

TEST(InstrumentManager, PrepareForUnloadLetsGoOfEverythingAndForgetsTheSearch)
{
    LoadTestPlugin("driver_two_devices");
    SmartPointer<QVIInstrumentManager> manager = Manager();
    SmartPointer<InstrumentMap> instruments = manager->GetListOfConnectedInstruments();
    EXPECT_TRUE(manager->PrepareForUnload());
    EXPECT_FALSE((*instruments)[String("TwoDeviceDriver_1001")].IsValid());
    EXPECT_STREQ("QVIInstrumentManager: 1 driver(s), not searched", manager->GetValueString().c_str());
}

TEST(InstrumentManager, AProgramThatNeverSearchedEndsCleanly)
{
    // At the end of the program the naming service asks the manager to
    // prepare for unload; its refusal must not end the program abnormally
    // (ctest sees the exit status of this test's process).
    EXPECT_TRUE(Manager().IsValid());
}

} // namespace
