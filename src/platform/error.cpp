#include "platform/error.hpp"

namespace hist {

Error::Error(long number, std::string source, std::string description)
    : std::runtime_error(description), number_(number), source_(std::move(source)),
      description_(std::move(description)) {}

namespace err {
const char* standardDescription(long number) noexcept {
    switch (number) {
        case InvalidCall: return "Invalid procedure call or argument";
        case Overflow: return "Overflow";
        case SubscriptOutOfRange: return "Subscript out of range";
        case DivisionByZero: return "Division by zero";
        case TypeMismatch: return "Type mismatch";
        case ObjectNotSet: return "Object variable or With block variable not set";
        case InvalidUseOfNull: return "Invalid use of Null";
        case ObjectRequired: return "Object required";
        case NoSuchMember: return "Object doesn't support this property or method";
        case ArgumentNotOptional: return "Argument not optional";
        case DuplicateKey: return "This key is already associated with an element of this collection";
        case BadArgument:
            return "Arguments are of the wrong type, are out of acceptable range, or are in conflict "
                   "with one another.";
        case NoCurrentRecord:
            return "Either BOF or EOF is True, or the current record has been deleted. Requested "
                   "operation requires a current record.";
        case IllegalOperation: return "Operation is not allowed in this context.";
        case InTransaction: return "Connection object cannot be explicitly closed while in a transaction.";
        case NotCapable: return "Object or provider is not capable of performing requested operation.";
        case ItemNotFound:
            return "Item cannot be found in the collection corresponding to the requested name or "
                   "ordinal.";
        case ObjectInCollection: return "Object is already in collection. Cannot append.";
        case ObjectNoLongerValid: return "Object is no longer valid.";
        case DataConversion:
            return "Application uses a value of the wrong type for the current operation.";
        case ObjectClosed: return "Operation is not allowed when the object is closed.";
        case ObjectOpen: return "Operation is not allowed when the object is open.";
        case InvalidConnection:
            return "The connection cannot be used to perform this operation. It is either closed or "
                   "invalid in this context.";
        default: return "";
    }
}
}  // namespace err

void raise(long number, const std::string& source) {
    throw Error(number, source, err::standardDescription(number));
}

void raise(long number, const std::string& source, const std::string& description) {
    throw Error(number, source, description);
}

}  // namespace hist
