#include "support/json_writer.h"

#include <gtest/gtest.h>

#include "support/json_reader.h"

namespace brimwatch {
namespace {

std::string rewritten(std::string_view text, JsonLayout layout = JsonLayout::compact) {
    const std::optional<JsonValue> value = parseJson(text);
    return value ? writeJson(*value, layout) : "(not JSON)";
}

TEST(JsonWriter, SortsKeysAndIndentsByTwo) {
    EXPECT_EQ(rewritten(R"({"b":[1,{"z":null}],"a":{},"c":[]})", JsonLayout::pretty),
              "{\n"
              "  \"a\": {},\n"
              "  \"b\": [\n"
              "    1,\n"
              "    {\n"
              "      \"z\": null\n"
              "    }\n"
              "  ],\n"
              "  \"c\": []\n"
              "}");
}

TEST(JsonWriter, WritesCompactWithoutBlanks) {
    EXPECT_EQ(rewritten(R"( { "b" : [ 1 , true ] , "a" : "x y" } )"),
              R"({"a":"x y","b":[1,true]})");
}

TEST(JsonWriter, KeepsTheSpellingOfNumbers) {
    constexpr std::string_view text = "[1e3,12345678901234567890,-0,1.50,1E+400,0.1e-999]";
    EXPECT_EQ(rewritten(text), text);
}

TEST(JsonWriter, EscapesOnlyWhatItMust) {
    EXPECT_EQ(rewritten(R"("\/ \u007f \" \\ \b\f\n\r\t \u0001 \u001f 한")"),
              "\"/ \x7F \\\" \\\\ \\b\\f\\n\\r\\t \\u0001 \\u001f 한\"");
}

TEST(JsonWriter, EscapesASurrogateWithoutItsPartner) {
    constexpr std::string_view text = R"({"\udfff":"\ud83d x \ude80"})";
    EXPECT_EQ(rewritten(text), text);
    EXPECT_EQ(rewritten(R"("\ud7ff\ue000")"), "\"\xED\x9F\xBF\xEE\x80\x80\"");
}

TEST(JsonWriter, AppendsATextAsAString) {
    std::string out = "[";
    appendJsonString(out, "a\"b\n");
    out += ',';
    appendJsonString(out, "");
    EXPECT_EQ(out, R"(["a\"b\n","")");
}

}  // namespace
}  // namespace brimwatch
