// The typed field readers of the record classes' own members: one rule per Null field
// (keep, empty, fail 94) and the runtime's conversions for values that are there.
#include <gtest/gtest.h>

#include "ado/ado_fixture.hpp"
#include "frame/record.hpp"

namespace hist::testing {
namespace {

using frame::RecordClass;
using frame::OnNull;

struct Reader : RecordClass {
    using RecordClass::readField;
};

TEST(FieldReaders, NullFollowsTheMembersRuleAndValuesConvertByTheArgumentsType) {
    auto rs = fabricate({{"T"}, {"N", backend::FieldType::Integer}, {"D", backend::FieldType::Double}},
                        {{std::monostate{}, std::monostate{}, std::monostate{}}, {"12", 40000LL, 2.5}});
    // Row 1: every field Null.
    std::string s = "kept";
    int16_t i = 7;
    double d = 1.5;
    Reader::readField(*rs, "T", s, OnNull::Keep);
    Reader::readField(*rs, "N", i, OnNull::Keep);
    EXPECT_EQ(s, "kept");
    EXPECT_EQ(i, 7);
    Reader::readField(*rs, "T", s, OnNull::Empty);
    Reader::readField(*rs, "D", d, OnNull::Empty);
    EXPECT_EQ(s, "");
    EXPECT_EQ(d, 0.0);
    EXPECT_EQ(errorOf([&] { Reader::readField(*rs, "N", i, OnNull::Fail); }), 94);
    Variant v = 3;
    Reader::readField(*rs, "T", v, OnNull::Fail);
    EXPECT_TRUE(v.isNull());

    // Row 2: values convert, and a value the argument cannot hold fails as the runtime does.
    rs->MoveNext();
    Reader::readField(*rs, "T", i, OnNull::Fail);
    Reader::readField(*rs, "D", s, OnNull::Fail);
    EXPECT_EQ(i, 12);
    EXPECT_EQ(s, "2,5");  // CStr writes the regional decimal separator (es-ES by default)
    EXPECT_EQ(errorOf([&] { Reader::readField(*rs, "N", i, OnNull::Fail); }), 6);
    EXPECT_EQ(i, 12);
    EXPECT_EQ(errorOf([&] { Reader::readField(*rs, "Nada", s, OnNull::Keep); }), 3265);
}

}  // namespace
}  // namespace hist::testing
