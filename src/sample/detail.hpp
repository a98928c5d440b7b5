#pragma once
// Internals of the sample generator: a portable random stream, calendar arithmetic
// on date serials, and the vocabulary the texts are drawn from.
#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace hist::sample::detail {

// xoshiro256** seeded through splitmix64. Our own draws (not <random>'s
// distributions), so a seed gives the same archive with every standard library.
class Rng {
public:
    explicit Rng(uint64_t seed, uint64_t stream = 0);
    uint64_t next();
    // Uniform in [0, n); n > 0.
    uint32_t below(uint32_t n) { return static_cast<uint32_t>((next() >> 32) * n >> 32); }
    // Uniform in [lo, hi].
    int range(int lo, int hi) { return lo + static_cast<int>(below(static_cast<uint32_t>(hi - lo + 1))); }
    // True with probability p.
    bool chance(double p) { return unit() < p; }
    double unit() { return static_cast<double>(next() >> 11) * 0x1.0p-53; }
    template <class T, std::size_t N>
    const T& pick(const std::array<T, N>& a) { return a[below(N)]; }
    template <class T>
    const T& pick(std::span<const T> a) { return a[below(static_cast<uint32_t>(a.size()))]; }

private:
    uint64_t s_[4];
};

// ---- Calendar on serials (days since 1899-12-30) ----
int serialOf(int year, int month, int day);
void civilOf(int serial, int& year, int& month, int& day);
// 0 Saturday, 1 Sunday, 2 Monday ... 6 Friday (serial 0 is a Saturday).
inline int weekdayIndex(int serial) { return ((serial % 7) + 7) % 7; }
inline bool isWorkingDay(int serial) { return weekdayIndex(serial) >= 2; }
// The next working day on or after serial.
int workingOnOrAfter(int serial);
// serial plus n working days (n >= 0).
int addWorkingDays(int serial, int n);
// "YYYY-MM-DD HH:MM:SS" of a day serial and seconds into the day; day 0 with a time
// gives the time-only form on 1899-12-30.
std::string isoText(int serial, int seconds = 0);
// "dd/mm/yyyy", as texts written for a person show a date.
std::string shortDate(int serial);

// ---- Vocabulary ----
struct Article {
    const char* code;
    const char* description;
    double price;
    double iva;       // tax percentage of the line
    double recargo;   // surcharge percentage (Articulos.Recargo)
    bool perTooth;    // one unit per tooth, the tooth named in the line
    int phasePlan;    // index into phasePlans()
};
std::span<const Article> articles();
// The articles that open a work order (the main piece of work).
std::span<const int> mainArticles();
// The articles that go along with the main piece.
std::span<const int> extraArticles();

struct Phase {
    const char* code;
    const char* description;
};
std::span<const Phase> phases();
// Sequences of phase indexes, one per kind of work.
std::span<const std::span<const int>> phasePlans();

struct Employee {
    const char* code;
    const char* name;
};
std::span<const Employee> employees();

struct Town {
    const char* name;
    const char* province;
    const char* postalPrefix;  // first digits of the postal code
    const char* phonePrefix;
};
std::span<const Town> towns();

std::span<const char* const> givenNamesF();
std::span<const char* const> givenNamesM();
std::span<const char* const> surnames();
std::span<const char* const> clinicPrefixes();
std::span<const char* const> clinicNames();
std::span<const char* const> streets();
std::span<const char* const> orderComments();
std::span<const char* const> documentComments();
std::span<const char* const> incidents();
std::span<const char* const> claimIncidents();
std::span<const char* const> claimActions();
std::span<const char* const> tryInTexts();
std::span<const char* const> toothNotes();
std::span<const char* const> metals();
std::span<const char* const> resins();
std::span<const char* const> shadesVita();
std::span<const char* const> shapes();
std::span<const char* const> labelConservation();
std::span<const char* const> labelHandling();
std::span<const char* const> labelWarnings();

// FDI tooth numbers 11..18, 21..28, 31..38, 41..48 by index 0..31.
inline int toothOfIndex(int i) { return (i / 8 + 1) * 10 + (i % 8) + 1; }

}  // namespace hist::sample::detail
