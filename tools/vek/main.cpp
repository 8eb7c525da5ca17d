// vek, the command-line program: operations of the library on picture files.
#include <cstdio>

#include "commands.h"
#include "library_call.h"
#include "printable.h"

namespace {

constexpr int kFailed = 1, kWrongUsage = 2;

void printError(const std::string& message) {
    std::fprintf(stderr, "vek: %s\n", printable(message).c_str());
}

void printTimes() {
    double total = 0;
    for (const auto& [name, milliseconds] : libraryTimes()) {
        std::fprintf(stderr, "%10.3f ms  %s\n", milliseconds, name.c_str());
        total += milliseconds;
    }
    std::fprintf(stderr, "%10.3f ms  in all\n", total);
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app(
        "Computer-vision operations on picture files (PNG, JPEG), those on sequences also on videos (by ffmpeg).",
        "vek");
    app.require_subcommand(1);
    app.fallthrough();
    app.set_version_flag("--version", vekcvGetLibVersion()->version);
    bool time = false;
    app.add_flag("--time", time, "Tell on standard error how long the library's functions took, files apart");
    app.add_option_function<int>(
           "--threads", [](const int& threads) { vekSetNumThreads(threads); },
           "Number of threads; by default VEKCORE_NUM_THREADS or that of the processors")
        ->check(CLI::Range(1, 1024))
        ->trigger_on_parse();
    addInfo(app);
    addList(app);
    addDiff(app);
    addBackground(app);
    addMotion(app);
    addForeground(app);
    addTrack(app);
    addSuperres(app);
    addStats(app);
    addLocalContrast(app);
    addFilter(app);
    addMorph(app);
    addReconstruct(app);
    addFillHoles(app);
    addEdges(app);
    addDistance(app);
    addUndistort(app);
    addInpaint(app);
    addFill(app);
    addLabel(app);
    addSegment(app);
    addDetect(app);

    try {
        app.parse(argc, argv);
        if (time)
            printTimes();
        // What a write before the last one could not write is lost, though the last one may succeed.
        if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0)
            throw Failure("standard output", "cannot be written");
        return 0;
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0)  // --help or --version
            return app.exit(error);
        printError(error.what() + std::string(" (see vek --help)"));
        return kWrongUsage;
    } catch (const UsageError& error) {
        printError(error.what());
        return kWrongUsage;
    } catch (const std::bad_alloc&) {
        printError("there is not enough memory");
    } catch (const std::exception& error) {
        printError(error.what());
    }
    return kFailed;
}
