// LocalLoader: the library's own components, without loading anything.

#include "qvimanager/components/local_loader.h"
#include "qvimanager/platform/mutex.h"
#include "qvimanager/platform/thread.h"
#include "tests/plugins/plugin_probe.h"
#include "tests/support/failure_text.h"
#include "tests/support/library_components.h"

#include <gtest/gtest.h>

namespace {

using Utilities::Component;
using Utilities::ExceptionDllLoader;
using Utilities::LocalLoader;
using Utilities::SmartPointer;
using Utilities::String;

// Opens the protected question of the loader.
class OpenLocalLoader : public LocalLoader {
public:
    using LocalLoader::GetFunctionAdresses;
    using LocalLoader::IsDLLLoaded;
    using LocalLoader::LoadDLL;
    using LocalLoader::UnloadDLL;
};

TEST(LocalLoader, IsLoadedFromTheStart)
{
    OpenLocalLoader loader;
    EXPECT_TRUE(loader.IsDLLLoaded());
    EXPECT_TRUE(loader.LoadDLL());
    EXPECT_TRUE(loader.GetFunctionAdresses());
    EXPECT_TRUE(loader.UnloadDLL());
    EXPECT_TRUE(loader.IsDLLLoaded());
}

TEST(LocalLoader, HasNoFileName)
{
    LocalLoader loader;
    EXPECT_STREQ("", loader.GetDLLName().GetCharPointer());
}

TEST(LocalLoader, AnswersWithoutTheLazyPath)
{
    // Nothing is bound, yet the queries answer from the library's factory.
    LocalLoader loader;
    EXPECT_FALSE(loader.FunctionPointersValid());
    EXPECT_NO_THROW(loader.GetComponentDescriptors());
    SmartPointer<Component> out;
    EXPECT_NO_THROW(loader.Resolve(String("NoSuchComponent"), &out));
    EXPECT_FALSE(out.IsValid());
    EXPECT_NO_THROW(loader.PrepareForUnload());
}

TEST(LocalLoader, IsNoPluginFileAndCannotBeAskedToUnload)
{
    // Loaded from the start, it answers validation by its entry points,
    // of which it binds none.
    LocalLoader loader;
    EXPECT_FALSE(loader.IsValidPluginDLL());
    EXPECT_EQ("DLL doesn't export plugin functions",
              TestSupport::FailureText<ExceptionDllLoader>([&] { loader.UnloadDLLIfPossible(); }));
}

TEST(LocalLoader, OffersTheLibrarysComponents)
{
    LocalLoader loader;
    EXPECT_EQ(TestSupport::LibraryComponents(),
              TestPlugins::DescriptorValues(loader.GetComponentDescriptors(), "name"));
    EXPECT_EQ((std::vector<std::string>{"$Revision: 1.4 $", "$Revision: 1.5 $", "$Revision: 1.4 $"}),
              TestPlugins::DescriptorValues(loader.GetComponentDescriptors(), "version"));
    EXPECT_EQ((std::vector<std::string>{"QVIManager", "Multithreading", "Multithreading"}),
              TestPlugins::DescriptorValues(loader.GetComponentDescriptors(), "category"));
    SmartPointer<Component> thread;
    loader.Resolve(String("ThreadImplementation"), &thread);
    EXPECT_TRUE(Utilities::DynamicCast<Utilities::ThreadImplementation>(thread).IsValid());
    SmartPointer<Component> mutex;
    loader.Resolve(String("MutexImplementation"), &mutex);
    EXPECT_TRUE(Utilities::DynamicCast<Utilities::MutexImplementation>(mutex).IsValid());
}

TEST(LocalLoader, ItsDestructorReleasesTheLibrarysFactoryForGood)
{
    // The library's creators register once, while it loads: after the
    // first loader has released the factory, a new loader finds an empty
    // one.
    {
        LocalLoader first;
        EXPECT_EQ(TestSupport::LibraryComponents().size(), first.GetComponentDescriptors().GetItemCount());
    }
    LocalLoader second;
    EXPECT_EQ(0UL, second.GetComponentDescriptors().GetItemCount());
    SmartPointer<Component> out;
    second.Resolve(String("ThreadImplementation"), &out);
    EXPECT_FALSE(out.IsValid());
}

TEST(LocalLoader, Label)
{
    LocalLoader loader;
    EXPECT_STREQ("LocalLoader: the components of the library", loader.GetValueString().c_str());
}

} // namespace
