#pragma once
// What the timing programs share: the best of a few timed runs, and the order-line
// columns the opening benchmarks read.
#include <algorithm>
#include <chrono>
#include <functional>

namespace hist::bench {

inline constexpr const char* kOrderLineColumns =
    "Codigo, Descripcion, Cantidad, Precio, DTO, IVA, Importe, Lote, Seccion, Empleado, Puntos, ID, Numero, "
    "Facturado, Doc_F, Fecha";

// The shortest wall time of `repeat` runs of f, in seconds.
inline double seconds(const std::function<void()>& f, int repeat = 3) {
    using Clock = std::chrono::steady_clock;
    double best = 1e100;
    for (int i = 0; i < repeat; ++i) {
        const auto t0 = Clock::now();
        f();
        best = std::min(best, std::chrono::duration<double>(Clock::now() - t0).count());
    }
    return best;
}

}  // namespace hist::bench
