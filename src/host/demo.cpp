#include "host/demo.hpp"

#include <filesystem>
#include <iostream>
#include <optional>

#include "backends/engine.hpp"
#include "frame/services/config.hpp"
#include "host/archive_env.hpp"
#include "host/road.hpp"
#include "platform/error.hpp"
#include "platform/regional.hpp"
#include "platform/runtime.hpp"
#include "sample/sample.hpp"

namespace hist::host {

int demoCommand(const DemoOptions& o, bool trace, std::ostream& out, std::ostream& err) {
    try {
        ArchiveEnvironment env({o.db, o.config}, trace, err);
        const std::string& path = env.archivePath();

        // A missing archive, or one without rows (as the host leaves it when it runs
        // first), gets the sample; an archive with any row is shown as it is.
        const bool missing = !std::filesystem::exists(path);
        // An existing file must be an archive: refused here, by name, before anything reads it.
        if (!missing) env.requireArchive();
        if (missing || !sample::holdsRows(path)) {
            if (missing) std::filesystem::create_directories(std::filesystem::path(path).parent_path());
            out << (missing ? "Creating the sample archive " : "Filling the empty archive ") << path
                << " with the sample (" << o.orders << " work orders)...\n";
            sample::Options so;
            so.orders = o.orders;
            so.seed = o.seed;
            sample::generate(path, so);
        }
        sample::summary(path, out);

        out << "\nThe road of one piece of work, through the record classes:\n";
        walkTheRoad(out);
        return 0;
    } catch (const Error& e) {
        err << "historicos demo: " << e.description() << " (error " << e.number() << ", " << e.source() << ")\n";
        return 1;
    } catch (const std::exception& e) {
        err << "historicos demo: " << e.what() << "\n";
        return 1;
    }
}

}  // namespace hist::host
