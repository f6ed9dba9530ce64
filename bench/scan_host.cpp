// The program whose start-up scan the bench times. It is copied into a
// scratch folder beside a "plugins" folder of plug-in files, so that its
// first NamingService::Instance() scans exactly those. It prints one line:
// the microseconds that call took (steady clock), then the number of
// components it registered from the plug-ins (category "Bench"; the
// library's own components are there too and do not count).

#include "qvimanager/components/naming_service.h"
#include "qvimanager/foundation/anything.h"
#include "qvimanager/foundation/exception.h"
#include "qvimanager/foundation/string.h"

#include <chrono>
#include <cstdio>

int main()
{
    try {
        const auto start = std::chrono::steady_clock::now();
        Utilities::NamingService* const service = Utilities::NamingService::Instance();
        const auto end = std::chrono::steady_clock::now();

        long components = 0;
        for (Utilities::NamingServiceIterator entry =
                 service->GetNamingServiceIterator(Utilities::String("category"), Utilities::Anything("Bench"));
             entry.IsValid(); entry++) {
            ++components;
        }
        std::printf("%.1f %ld\n", std::chrono::duration<double, std::micro>(end - start).count(), components);
        return 0;
    } catch (const Utilities::Exception& failure) {
        std::fprintf(stderr, "scan host: %s\n", failure.GetExceptionText().GetCharPointer());
        return 1;
    }
}
