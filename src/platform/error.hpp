#pragma once
// The one exception type of the library: number, source and description, as the
// platform's error object carries them. Numbers are the platform's own (runtime
// errors 5, 6, 9, 13, 91, 94, ...; data-layer errors 3001, 3021, 3265, ...;
// provider failures as negative HRESULT values).
#include <stdexcept>
#include <string>

namespace hist {

class Error : public std::runtime_error {
public:
    Error(long number, std::string source, std::string description);

    long number() const noexcept { return number_; }
    const std::string& source() const noexcept { return source_; }
    const std::string& description() const noexcept { return description_; }

private:
    long number_;
    std::string source_;
    std::string description_;
};

namespace err {
// Runtime error numbers.
inline constexpr long InvalidCall = 5;
inline constexpr long Overflow = 6;
inline constexpr long SubscriptOutOfRange = 9;
inline constexpr long DivisionByZero = 11;
inline constexpr long TypeMismatch = 13;
inline constexpr long ObjectNotSet = 91;
inline constexpr long InvalidUseOfNull = 94;
inline constexpr long ObjectRequired = 424;
inline constexpr long NoSuchMember = 438;
inline constexpr long ArgumentNotOptional = 449;
inline constexpr long CannotCreateObject = 429;
inline constexpr long WrongArgumentCount = 450;
inline constexpr long DuplicateKey = 457;
inline constexpr long InternalError = 51;
inline constexpr long DeviceIo = 57;
inline constexpr long DiskFull = 61;
inline constexpr long PathFileAccess = 75;
inline constexpr long PathNotFound = 76;

// Data-layer error numbers (low word of the control-facility HRESULT).
inline constexpr long BadArgument = 3001;
inline constexpr long NoCurrentRecord = 3021;
inline constexpr long IllegalOperation = 3219;
inline constexpr long InTransaction = 3246;
inline constexpr long NotCapable = 3251;
inline constexpr long ItemNotFound = 3265;
inline constexpr long ObjectInCollection = 3367;
inline constexpr long ObjectNoLongerValid = 3420;
inline constexpr long DataConversion = 3421;
inline constexpr long ObjectClosed = 3704;
inline constexpr long ObjectOpen = 3705;
inline constexpr long InvalidConnection = 3709;

// Provider failures of a statement (negative HRESULTs).
inline constexpr long SqlSyntax = -2147217900;
inline constexpr long SqlTypeMismatch = -2147217913;
inline constexpr long SqlNoTable = -2147217865;
inline constexpr long SqlPermission = -2147217911;
inline constexpr long SqlRowConflict = -2147217864;
inline constexpr long SqlNoValue = -2147217904;
inline constexpr long SqlTimeout = -2147217871;
// The provider's general failure: the archive locked, a duplicate key, a write-back
// without base table information.
inline constexpr long ProviderFailure = -2147467259;
inline constexpr long NoTransaction = -2147168242;

// Sources.
inline constexpr const char* SrcRuntime = "historicos.runtime";
inline constexpr const char* SrcSql = "historicos.sql";
inline constexpr const char* SrcRecordset = "historicos.recordset";
inline constexpr const char* SrcConnection = "historicos.connection";
inline constexpr const char* SrcHost = "historicos.host";

// The runtime's standard English description of a runtime or data-layer number
// ("Overflow", "Type mismatch", ...); an empty text for numbers it does not know.
const char* standardDescription(long number) noexcept;
}  // namespace err

// Raise a runtime or data-layer error with its standard description.
[[noreturn]] void raise(long number, const std::string& source);
// Raise with a description of the caller's own (the standard one plus detail,
// for example the field name at fault).
[[noreturn]] void raise(long number, const std::string& source, const std::string& description);

}  // namespace hist
