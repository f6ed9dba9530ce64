// DllLoader on the test plug-ins: lazy loading, validation, binding all
// four entry points or none, unloading, and a factory per plug-in.

#include "qvimanager/components/dll_loader.h"
#include "qvimanager/components/local_loader.h"
#include "qvimanager/foundation/exception.h"
#include "tests/plugins/plugin_probe.h"
#include "tests/support/failure_text.h"
#include "tests/support/no_plugin_files.h"

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

using TestPlugins::DescriptorValues;
using TestPlugins::PluginProbe;
using TestSupport::FailureText;
using Utilities::Anything;
using Utilities::Component;
using Utilities::DllLoader;
using Utilities::DynamicCast;
using Utilities::ExceptionDllLoader;
using Utilities::ExceptionResourceNotAvailable;
using Utilities::List;
using Utilities::ListIterator;
using Utilities::LocalLoader;
using Utilities::Map;
using Utilities::SmartPointer;
using Utilities::String;

std::string PluginPath(const std::string& name)
{
    return std::string(QVIMANAGER_TEST_PLUGIN_DIR) + "/" + name;
}

// Whether the dynamic loader has the file mapped now, asked without
// loading it.
bool IsMapped(const std::string& path)
{
    void* const handle = dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD);
    if (handle == nullptr) {
        return false;
    }
    dlclose(handle);
    return true;
}

SmartPointer<DllLoader> LoaderFor(const std::string& name)
{
    SmartPointer<DllLoader> loader = DllLoader::NewInstance();
    loader->SetDLLName(String(PluginPath(name).c_str()));
    return loader;
}

SmartPointer<PluginProbe> ResolveProbe(const SmartPointer<DllLoader>& loader, const char* name)
{
    SmartPointer<Component> out;
    loader->Resolve(String(name), &out);
    return DynamicCast<PluginProbe>(out);
}

const char* const kCantLoad = "Can't load DLL";
const char* const kNoEntryPoints = "DLL doesn't export plugin functions";

TEST(DllLoader, NewInstanceHasNoFileAndIsNotLoaded)
{
    SmartPointer<DllLoader> loader = DllLoader::NewInstance();
    ASSERT_TRUE(loader.IsValid());
    EXPECT_STREQ("", loader->GetDLLName().GetCharPointer());
    EXPECT_FALSE(loader->FunctionPointersValid());
    EXPECT_STREQ("DLL name: ; DLL's instance handle is: 0", loader->GetValueString().c_str());
}

TEST(DllLoader, KeepsItsFileName)
{
    SmartPointer<DllLoader> loader = DllLoader::NewInstance();
    loader->SetDLLName(String("/somewhere/driver.dll"));
    EXPECT_STREQ("/somewhere/driver.dll", loader->GetDLLName().GetCharPointer());
}

TEST(DllLoader, LoadsNothingBeforeTheFirstQuery)
{
    const std::string path = PluginPath("two_components.dll");
    SmartPointer<DllLoader> loader = LoaderFor("two_components.dll");
    EXPECT_FALSE(IsMapped(path));
    EXPECT_FALSE(loader->FunctionPointersValid());
}

TEST(DllLoader, ResolveLoadsTheFileFirst)
{
    const std::string path = PluginPath("two_components.dll");
    SmartPointer<DllLoader> loader = LoaderFor("two_components.dll");
    SmartPointer<PluginProbe> lamp = ResolveProbe(loader, "PluginLamp");
    ASSERT_TRUE(lamp.IsValid());
    EXPECT_STREQ("two_components: lamp", lamp->Identify().GetCharPointer());
    EXPECT_TRUE(IsMapped(path));
    EXPECT_TRUE(loader->FunctionPointersValid());
}

TEST(DllLoader, DescriptorsLoadTheFileFirst)
{
    SmartPointer<DllLoader> loader = LoaderFor("two_components.dll");
    const List<Map<String, Anything>>& descriptors = loader->GetComponentDescriptors();
    EXPECT_EQ((std::vector<std::string>{"PluginLamp", "PluginClock"}), DescriptorValues(descriptors, "name"));
    EXPECT_EQ((std::vector<std::string>{"$Revision: 1.3 $", "$Revision: 2.1 $"}),
              DescriptorValues(descriptors, "version"));
    EXPECT_TRUE(IsMapped(PluginPath("two_components.dll")));
}

TEST(DllLoader, LabelShowsTheNameAndTheHandle)
{
    const std::string path = PluginPath("two_components.dll");
    SmartPointer<DllLoader> loader = LoaderFor("two_components.dll");
    ASSERT_TRUE(loader->IsValidPluginDLL());
    void* const handle = dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(nullptr, handle);
    dlclose(handle);
    const std::string expected = "DLL name: " + path + "; DLL's instance handle is: " +
                                 std::to_string(reinterpret_cast<std::uintptr_t>(handle));
    EXPECT_EQ(expected, std::string(loader->GetValueString().c_str()));
}

TEST(DllLoader, ValidPluginStaysLoadedAfterTheCheck)
{
    SmartPointer<DllLoader> loader = LoaderFor("two_components.dll");
    EXPECT_TRUE(loader->IsValidPluginDLL());
    EXPECT_TRUE(IsMapped(PluginPath("two_components.dll")));
    // A loaded file answers by its bound entry points.
    EXPECT_TRUE(loader->IsValidPluginDLL());
}

TEST(DllLoader, ThreeOfFourEntryPointsIsNoPluginAndBindsNone)
{
    const std::string path = PluginPath("three_entry_points.dll");
    SmartPointer<DllLoader> loader = LoaderFor("three_entry_points.dll");
    EXPECT_FALSE(loader->IsValidPluginDLL());
    EXPECT_FALSE(loader->FunctionPointersValid());
    // It stays loaded, with every pointer null.
    EXPECT_TRUE(IsMapped(path));
    EXPECT_FALSE(loader->IsValidPluginDLL());
    EXPECT_EQ(kNoEntryPoints, FailureText<ExceptionDllLoader>([&] { loader->GetComponentDescriptors(); }));
    SmartPointer<Component> out;
    EXPECT_EQ(kNoEntryPoints, FailureText<ExceptionDllLoader>([&] { loader->Resolve(String("x"), &out); }));
    EXPECT_EQ(kNoEntryPoints, FailureText<ExceptionDllLoader>([&] { loader->PrepareForUnload(); }));
    EXPECT_EQ(kNoEntryPoints, FailureText<ExceptionDllLoader>([&] { loader->UnloadDLLIfPossible(); }));
}

TEST(DllLoader, ThreeOfFourEntryPointsFailsAQueryThatLoadsIt)
{
    SmartPointer<DllLoader> loader = LoaderFor("three_entry_points.dll");
    EXPECT_EQ(kNoEntryPoints, FailureText<ExceptionDllLoader>([&] { loader->GetComponentDescriptors(); }));
    EXPECT_FALSE(loader->FunctionPointersValid());
}

TEST(DllLoader, FileThatNeverBoundItsEntryPointsStaysLoadedWhenTheLoaderGoes)
{
    const std::string path = PluginPath("three_entry_points.dll");
    {
        SmartPointer<DllLoader> loader = LoaderFor("three_entry_points.dll");
        EXPECT_FALSE(loader->IsValidPluginDLL());
    }
    EXPECT_TRUE(IsMapped(path));
}

TEST(DllLoader, MissingFileIsNoPluginAndFailsQueries)
{
    SmartPointer<DllLoader> loader = LoaderFor("missing.dll");
    EXPECT_FALSE(loader->IsValidPluginDLL());
    EXPECT_EQ(kCantLoad, FailureText<ExceptionDllLoader>([&] { loader->GetComponentDescriptors(); }));
    SmartPointer<Component> out;
    EXPECT_EQ(kCantLoad, FailureText<ExceptionDllLoader>([&] { loader->Resolve(String("x"), &out); }));
    EXPECT_FALSE(out.IsValid());
    // Not loaded: these do nothing.
    EXPECT_NO_THROW(loader->PrepareForUnload());
    EXPECT_NO_THROW(loader->UnloadDLLIfPossible());
}

TEST(DllLoader, TextFileNamedLikeAPluginIsNoPlugin)
{
    SmartPointer<DllLoader> loader = LoaderFor("not_a_plugin.dll");
    EXPECT_FALSE(loader->IsValidPluginDLL());
    EXPECT_EQ(kCantLoad, FailureText<ExceptionDllLoader>([&] { loader->GetComponentDescriptors(); }));
}

TEST(DllLoader, DirectoryNamedLikeAPluginIsNoPlugin)
{
    char pattern[] = "/tmp/qvimanager-loader-XXXXXX";
    ASSERT_NE(nullptr, mkdtemp(pattern));
    const std::string directory = std::string(pattern) + "/x.dll";
    ASSERT_EQ(0, mkdir(directory.c_str(), 0700));
    SmartPointer<DllLoader> loader = DllLoader::NewInstance();
    loader->SetDLLName(String(directory.c_str()));
    EXPECT_FALSE(loader->IsValidPluginDLL());
    EXPECT_EQ(kCantLoad, FailureText<ExceptionDllLoader>([&] { loader->GetComponentDescriptors(); }));
    rmdir(directory.c_str());
    rmdir(pattern);
}

// Each file that is no plug-in (no_plugin_files.h) is refused in this
// process, which goes on: given to the dynamic loader, a truncated one
// would end it.
class NoPluginFile : public ::testing::TestWithParam<TestSupport::NoPluginFile> {};

TEST_P(NoPluginFile, IsNoPluginAndFailsQueriesWithoutEndingTheProcess)
{
    TestSupport::ScratchFolder folder;
    const std::string path = (folder.root / "x.dll").string();
    GetParam().make(path);
    SmartPointer<DllLoader> loader = DllLoader::NewInstance();
    loader->SetDLLName(String(path.c_str()));
    EXPECT_FALSE(loader->IsValidPluginDLL());
    EXPECT_FALSE(loader->FunctionPointersValid());
    EXPECT_EQ(kCantLoad, FailureText<ExceptionDllLoader>([&] { loader->GetComponentDescriptors(); }));
    SmartPointer<Component> out;
    EXPECT_EQ(kCantLoad, FailureText<ExceptionDllLoader>([&] { loader->Resolve(String("PluginLamp"), &out); }));
    EXPECT_FALSE(out.IsValid());
    EXPECT_NO_THROW(loader->UnloadDLLIfPossible());
}

INSTANTIATE_TEST_SUITE_P(DllLoader, NoPluginFile, ::testing::ValuesIn(TestSupport::NoPluginFiles()),
                         TestSupport::NoPluginFileName);

TEST(DllLoader, FileThatCannotRegisterItsComponentsDoesNotLoad)
{
    const std::string path = PluginPath("nameless_descriptor.dll");
    SmartPointer<DllLoader> loader = LoaderFor("nameless_descriptor.dll");
    EXPECT_FALSE(loader->IsValidPluginDLL());
    EXPECT_FALSE(IsMapped(path));
    EXPECT_EQ(kCantLoad, FailureText<ExceptionDllLoader>([&] { loader->GetComponentDescriptors(); }));
    EXPECT_FALSE(IsMapped(path));
}

TEST(DllLoader, NameWithoutDirectoryIsAFileInTheCurrentDirectory)
{
    char* const previous = getcwd(nullptr, 0);
    ASSERT_EQ(0, chdir(QVIMANAGER_TEST_PLUGIN_DIR));
    SmartPointer<DllLoader> loader = DllLoader::NewInstance();
    loader->SetDLLName(String("two_components.dll"));
    EXPECT_TRUE(loader->IsValidPluginDLL());
    // Not a library looked up on the system's path.
    SmartPointer<DllLoader> system = DllLoader::NewInstance();
    system->SetDLLName(String("libc.so.6"));
    EXPECT_FALSE(system->IsValidPluginDLL());
    ASSERT_EQ(0, chdir(previous));
    free(previous);
}

TEST(DllLoader, UnloadsTheFileWhenTheLastPointerGoes)
{
    const std::string path = PluginPath("two_components.dll");
    {
        SmartPointer<DllLoader> loader = LoaderFor("two_components.dll");
        SmartPointer<DllLoader> shared = loader;
        ASSERT_TRUE(loader->IsValidPluginDLL());
        loader = SmartPointer<DllLoader>();
        EXPECT_TRUE(IsMapped(path));
    }
    EXPECT_FALSE(IsMapped(path));
}

TEST(DllLoader, LiveComponentKeepsTheFileLoaded)
{
    const std::string path = PluginPath("two_components.dll");
    SmartPointer<PluginProbe> lamp;
    {
        SmartPointer<DllLoader> loader = LoaderFor("two_components.dll");
        lamp = ResolveProbe(loader, "PluginLamp");
        ASSERT_TRUE(lamp.IsValid());
        EXPECT_NO_THROW(loader->UnloadDLLIfPossible());
        // Asked and refused: still loaded and bound.
        EXPECT_TRUE(loader->FunctionPointersValid());
    }
    EXPECT_TRUE(IsMapped(path));
    EXPECT_STREQ("two_components: lamp", lamp->Identify().GetCharPointer());
}

TEST(DllLoader, FileAnsweringFalseStaysLoadedAfterItsLoaderGoes)
{
    const std::string path = PluginPath("stays_loaded.dll");
    {
        SmartPointer<DllLoader> loader = LoaderFor("stays_loaded.dll");
        ASSERT_TRUE(loader->IsValidPluginDLL());
        SmartPointer<PluginProbe> pinned = ResolveProbe(loader, "Pinned");
        ASSERT_TRUE(pinned.IsValid());
    }
    EXPECT_TRUE(IsMapped(path));
}

TEST(DllLoader, UnloadClearsTheEntryPointsAndTheNextQueryLoadsAgain)
{
    const std::string path = PluginPath("two_components.dll");
    SmartPointer<DllLoader> loader = LoaderFor("two_components.dll");
    ASSERT_TRUE(loader->IsValidPluginDLL());
    loader->UnloadDLLIfPossible();
    EXPECT_FALSE(loader->FunctionPointersValid());
    EXPECT_FALSE(IsMapped(path));
    EXPECT_EQ(2UL, loader->GetComponentDescriptors().GetItemCount());
    EXPECT_TRUE(IsMapped(path));
}

TEST(DllLoader, PrepareForUnloadOfAnUnloadedFileDoesNothing)
{
    const std::string path = PluginPath("two_components.dll");
    SmartPointer<DllLoader> loader = LoaderFor("two_components.dll");
    EXPECT_NO_THROW(loader->PrepareForUnload());
    EXPECT_FALSE(IsMapped(path));
}

TEST(DllLoader, PrepareForUnloadAsksThePluginsComponents)
{
    SmartPointer<DllLoader> loader = LoaderFor("two_components.dll");
    SmartPointer<PluginProbe> clock = ResolveProbe(loader, "PluginClock");
    ASSERT_TRUE(clock.IsValid());
    EXPECT_EQ(0, clock->TimesPrepared());
    loader->PrepareForUnload();
    // The singleton, held by its creator, is asked; a normal component is
    // not (its creator answers for it).
    EXPECT_EQ(1, clock->TimesPrepared());
}

TEST(DllLoader, PluginSingletonIsOneObject)
{
    SmartPointer<DllLoader> loader = LoaderFor("two_components.dll");
    SmartPointer<PluginProbe> first = ResolveProbe(loader, "PluginClock");
    SmartPointer<PluginProbe> second = ResolveProbe(loader, "PluginClock");
    ASSERT_TRUE(first.IsValid());
    EXPECT_EQ(first.operator->(), second.operator->());
    EXPECT_STREQ("two_components: clock", first->Identify().GetCharPointer());
}

TEST(DllLoader, UnknownNameLeavesTheTargetAlone)
{
    SmartPointer<DllLoader> loader = LoaderFor("two_components.dll");
    SmartPointer<Component> out;
    loader->Resolve(String("Nobody"), &out);
    EXPECT_FALSE(out.IsValid());
}

TEST(DllLoader, ComponentConstructorFailurePassesThrough)
{
    SmartPointer<DllLoader> loader = LoaderFor("throwing_constructor.dll");
    SmartPointer<Component> out;
    EXPECT_EQ("Faulty component cannot start",
              FailureText<ExceptionResourceNotAvailable>([&] { loader->Resolve(String("Faulty"), &out); }));
    EXPECT_FALSE(out.IsValid());
}

TEST(DllLoader, TwoPluginsWithOneNameKeepTheirOwnCreators)
{
    SmartPointer<DllLoader> first = LoaderFor("same_name_first.dll");
    SmartPointer<DllLoader> second = LoaderFor("same_name_second.dll");
    ASSERT_TRUE(first->IsValidPluginDLL());
    ASSERT_TRUE(second->IsValidPluginDLL());
    SmartPointer<PluginProbe> fromFirst = ResolveProbe(first, "SharedName");
    SmartPointer<PluginProbe> fromSecond = ResolveProbe(second, "SharedName");
    ASSERT_TRUE(fromFirst.IsValid());
    ASSERT_TRUE(fromSecond.IsValid());
    EXPECT_STREQ("same_name_first", fromFirst->Identify().GetCharPointer());
    EXPECT_STREQ("same_name_second", fromSecond->Identify().GetCharPointer());
    EXPECT_EQ((std::vector<std::string>{"$Revision: 1.5 $"}),
              DescriptorValues(first->GetComponentDescriptors(), "version"));
    EXPECT_EQ((std::vector<std::string>{"$Revision: 1.6 $"}),
              DescriptorValues(second->GetComponentDescriptors(), "version"));
}

TEST(DllLoader, PluginComponentsNeverReachTheLibrarysFactory)
{
    SmartPointer<DllLoader> plugin = LoaderFor("two_components.dll");
    SmartPointer<DllLoader> other = LoaderFor("same_name_first.dll");
    ASSERT_TRUE(plugin->IsValidPluginDLL());
    ASSERT_TRUE(other->IsValidPluginDLL());
    LocalLoader library;
    const std::vector<std::string> names = DescriptorValues(library.GetComponentDescriptors(), "name");
    for (const char* name : {"PluginLamp", "PluginClock", "SharedName"}) {
        EXPECT_EQ(names.end(), std::find(names.begin(), names.end(), name)) << name;
    }
    SmartPointer<Component> out;
    library.Resolve(String("PluginLamp"), &out);
    EXPECT_FALSE(out.IsValid());
}

TEST(DllLoader, EntryPointSettersAndTheirCheck)
{
    SmartPointer<DllLoader> loader = DllLoader::NewInstance();
    loader->SetResolveFunctionPointer([](const String&, SmartPointer<Component>*) {});
    loader->SetGetComponentDescriptorsFunctionPointer([]() -> const List<Map<String, Anything>>& {
        static List<Map<String, Anything>> none;
        return none;
    });
    loader->SetCanUnloadDLLFunctionPointer([] { return true; });
    EXPECT_FALSE(loader->FunctionPointersValid());
    loader->SetPrepareForUnloadFunctionPointer([] {});
    EXPECT_TRUE(loader->FunctionPointersValid());
    loader->SetResolveFunctionPointer(nullptr);
    EXPECT_FALSE(loader->FunctionPointersValid());
}

} // namespace
