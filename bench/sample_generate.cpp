// Times the sample archive's generation (a plain timing program, not a unit test).
//   bench_sample_generate [orders=220000] [path=<temp>/historicos-bench-sample.db]
// Prints the rows written, wall-clock and processor seconds, and order lines per second.
#include <chrono>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <string>

#include "sample/sample.hpp"

int main(int argc, char** argv) {
    namespace fs = std::filesystem;
    const std::size_t orders = argc > 1 ? std::stoul(argv[1]) : 220000;
    const std::string path =
        argc > 2 ? argv[2] : (fs::temp_directory_path() / "historicos-bench-sample.db").string();
    for (const char* suffix : {"", "-wal", "-shm"}) fs::remove(path + suffix);

    hist::sample::Options opt;
    opt.orders = orders;
    const std::clock_t cpu0 = std::clock();
    const auto wall0 = std::chrono::steady_clock::now();
    const hist::sample::Result r = hist::sample::generate(path, opt);
    const double wall = std::chrono::duration<double>(std::chrono::steady_clock::now() - wall0).count();
    const double cpu = static_cast<double>(std::clock() - cpu0) / CLOCKS_PER_SEC;

    long long all = 0, lines = 0;
    for (const auto& t : r.counts) {
        all += t.rows;
        if (t.table == "HOrdenes_Lineas") lines = t.rows;
    }
    std::printf("orders %zu  order lines %lld  rows %lld\n", orders, lines, all);
    std::printf("wall %.2f s  cpu %.2f s  order lines/s (wall) %.0f  rows/s (wall) %.0f\n", wall, cpu,
                static_cast<double>(lines) / wall, static_cast<double>(all) / wall);
    for (const char* suffix : {"", "-wal", "-shm"}) fs::remove(path + suffix);
    return 0;
}
