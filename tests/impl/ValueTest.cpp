// Right-hand sides: dispatch, scalars and buffers.
#include "tests/support/Reading.h"

#include <cstring>
#include <libdeflate.h>

namespace vrn::test {

using Type = Token::Type;

TEST(Value, recordsWhichFormItFound) {
    const struct {
        const char* text;
        bool isScalar, isBuffer, isReference;
    } cases[] = {
        {"= 1;", true, false, false},         {"= true;", true, false, false},
        {"= vec2(1 2);", true, false, false}, {"= int32[1] {5};", false, true, false},
        {"= other;", false, false, true},     {"= NULL;", false, false, true},
    };
    for (const auto& c : cases) {
        ParserOn p(c.text);
        AssignInfo info;
        EXPECT_TRUE(p->value(info)) << c.text;
        EXPECT_EQ(info.isScalar, c.isScalar) << c.text;
        EXPECT_EQ(info.isBuffer, c.isBuffer) << c.text;
        EXPECT_EQ(info.isReference, c.isReference) << c.text;
        EXPECT_FALSE(info.isConnection) << c.text;
        EXPECT_EQ(p->current().type, Type::Eof) << c.text;
    }
}

// A recogniser that fails keeps the tokens that it has consumed; the next one continues after them.
TEST(Value, readsABufferAfterAScalarThatFails) {
    const struct {
        const char* value;
        std::vector<const char*> log;
    } cases[] = {
        {"vec3(1 2) float[1] {2}", {}},
        {"rgba(1) vec2f[1] {1 2}", {}},
        {"1-2 float[1] {1}", {}},
        {"1e-5 float[1] {1}", {}},
        {"- float[1] {1}", {}},
        {"- float[0] {1 2}", {}},
        {"- byte[3] {.789C6364 620600000D0007}", {}},
        {"- vec2f[2] {1 2 3}", {"Too few elements (1) for vec2f[2] buffer, remainder set to zero."}},
        {"99999999999999999999 int32[2] {1 2 3}", {"BUFFER ERROR (1,48): Cannot add 3 @ index 2 of int32[2].."}},
        {"- byte[1] {256}", {"PARSE ERROR (1,26): Failed to read 'byte' buffer.."}},
        {"- byte[1] {.7}", {"PARSE ERROR (1,25): compressed payload: odd number of hexadecimal digits."}},
        {"- float[*] {}", {"PARSE ERROR (1,24): invalid buffer element count: [*]."}},
    };
    for (const auto& c : cases) {
        const Reading after = readText("n n; n.x = " + String(c.value) + ";");
        std::vector<const char*> log;
        for (const LogRecord& record : after.log)
            log.push_back(record.text.buf());
        ASSERT_EQ(log.size(), c.log.size()) << c.value << (log.empty() ? "" : log[0]);
        if (!log.empty()) {
            EXPECT_STREQ(log[0], c.log[0]) << c.value;
        }
        if (!c.log.empty() && std::string_view(c.log[0]).find("ERROR") != std::string_view::npos)
            continue;
        // The same buffer where it is the first value.
        const std::string_view value = c.value;
        const std::string_view buffer = value.substr(value.find_first_of("bfv", value.find(' ')));
        const Reading alone = readText("n n; n.x = " + String(buffer) + ";");
        ASSERT_EQ(after.input("n.x")->type(), AttrType::Buffer) << c.value;
        EXPECT_EQ(after.value("n.x"), alone.value("n.x")) << c.value;
    }
}

TEST(Value, readsABufferFromTheTokensAtTheCursor) {
    ParserOn p("FLOAT[2] {1 2};");
    AssignInfo info;
    EXPECT_TRUE(p->buffer(info));
    EXPECT_EQ(info.data.elements<float>()[1], 2.0F);
    EXPECT_EQ(info.valueString(), "FLOAT[]");
    EXPECT_EQ(p->current().type, Type::Semicolon);
    // A list that the lexer has not normalised: only spaces separate.
    ParserOn other("double[2] {};");
    other->tokens[2].text = "{1 x}";
    VrnParser::AssignInfo broken;
    EXPECT_THROW((void)other->buffer(broken), ReadError);
    EXPECT_EQ(broken.data.elements<double>()[0], 1.0);
    EXPECT_EQ(broken.data.elements<double>()[1], 0.0);
}

TEST(Value, needsAnEqualsSign) {
    ParserOn p("x;");
    AssignInfo info;
    EXPECT_FALSE(p->value(info));
    EXPECT_EQ(p->current().text, "x");
}

TEST(Value, reportsMissingOrInvalidValues) {
    const struct {
        const char* text;
        Log log;
    } cases[] = {
        {"x.y = ;", {error(1, 12, "BAD TOKEN (1,12): expected '(scalar|buffer|reference)', found ';'.")}},
        {"x.y = 1", {error(1, 12, "BAD TOKEN (1,12): expected ';', found 'EOF'.")}},
        {"x.y = 1 2;", {error(1, 14, "BAD TOKEN (1,14): expected ';', found '2'.")}},
        {"x.y = foo(1);", {error(1, 17, "BAD TOKEN (1,17): expected ';', found '(1)'.")}},
        {"x.y = vec2;", {}}, // a reference to a missing node of that name
        {"x.y = vec3(1 2);", {error(1, 21, "BAD TOKEN (1,21): expected '(scalar|buffer|reference)', found ';'.")}},
        {"x.y = 1-2;", {error(1, 15, "BAD TOKEN (1,15): expected '(scalar|buffer|reference)', found ';'.")}},
        {"x.y = float {1 2};", {error(1, 22, "BAD TOKEN (1,22): expected ';', found '{1 2}'.")}},
        {"x.y = float[2];", {error(1, 19, "BAD TOKEN (1,19): expected ';', found '[2]'.")}},
        {"x.y = rgba(1 0 0 x);", {error(1, 22, "INVALID PAREN LIST TOKEN (1,22): 'x'")}},
        {"x.y : 5;", {error(1, 8, "PARSE ERROR (1,8): unrecognized token ':'..")}},
    };
    for (const auto& c : cases) {
        const Reading r = readText("t x; " + String(c.text));
        if (c.log.empty())
            EXPECT_EQ(r.log, (Log{warning(1, 15, "Cannot assign nonexistent node vec2 to x.y.")}));
        else
            EXPECT_EQ(r.log, c.log) << c.text;
    }
}

TEST(Value, continuesAfterAnInvalidScalar) {
    const Reading r = readText("t x; t foo; x.y = vec3(1 2) foo;");
    EXPECT_TRUE(r.isOk);
    EXPECT_EQ(r.input("x.y")->type(), AttrType::Vec3) << "made with the type of the first form";
}

struct ScalarRead {
    bool isRead = false;
    AssignInfo info;
    bool isConsumed = false;
};

static ScalarRead scalarOf(const char* text) {
    ParserOn p(text);
    ScalarRead result;
    result.isRead = p->scalar(result.info);
    result.isConsumed = !(p->position() == TextPosition{0, 0});
    return result;
}

TEST(Scalar, readsLiterals) {
    EXPECT_TRUE(scalarOf("true").info.data.asBool());
    EXPECT_EQ(scalarOf("FALSE").info.data.type(), AttrType::Bool);
    EXPECT_EQ(scalarOf("7").info.data, AttrData::integer(7));
    EXPECT_EQ(scalarOf("-3").info.data, AttrData::integer(-3));
    EXPECT_EQ(scalarOf("7u").info.data, AttrData::unsignedInteger(7));
    EXPECT_EQ(scalarOf("7U").info.data, AttrData::integer(7)) << "only the small letter makes it unsigned";
    EXPECT_EQ(scalarOf("-1u").info.data, AttrData::unsignedInteger(~u64(0)));
    EXPECT_EQ(scalarOf("7.0").info.data, AttrData::real(7));
    EXPECT_EQ(scalarOf("1e5").info.data, AttrData::integer(100000));
    EXPECT_EQ(scalarOf("0b1").info.data, AttrData::integer(1));
    EXPECT_EQ(scalarOf("-inf").info.data, AttrData::real(-std::numeric_limits<double>::infinity()));
    EXPECT_STREQ(scalarOf(R"("a\tb\"")").info.data.asString(), "a\tb\"");
    EXPECT_STREQ(scalarOf(R"("")").info.data.asString(), "");
    EXPECT_EQ(scalarOf("{ }").info.data.type(), AttrType::Object);
    EXPECT_EQ(scalarOf("[ ]").info.data.type(), AttrType::Array);
    ParserOn p("{ 1 }");
    AssignInfo info;
    EXPECT_TRUE(p->scalar(info));
    EXPECT_EQ(info.valueToken.text, "{1}");
}

TEST(Scalar, readsKeywordForms) {
    const struct {
        const char* text;
        AttrType type;
        std::vector<double> components;
    } cases[] = {
        {"vec2(0.5 1)", AttrType::Vec2, {0.5, 1}},
        {"VEC2(0.5 1)", AttrType::Vec2, {0.5, 1}},
        {"vec3(1 2 3)", AttrType::Vec3, {1, 2, 3}},
        {"vec3(1 2 3 4)", AttrType::Vec3, {1, 2, 3}},
        {"vec3(1,2,3)", AttrType::Vec3, {1, 2, 3}}, // the lexer replaces commas by spaces
        {"vec4(1 2 3 4)", AttrType::Vec4, {1, 2, 3, 4}},
        {"pos2(1 2)", AttrType::Pos2, {1, 2}},
        {"pos3(1 2 3)", AttrType::Pos3, {1, 2, 3}},
        {"quat(0 0 0 1)", AttrType::Quat, {0, 0, 0, 1}},
        {"rgba(1 0.5 0)", AttrType::Rgba, {1, 0.5, 0, 1}},
        {"RGBA(1 0.5 0 0.25)", AttrType::Rgba, {1, 0.5, 0, 0.25}},
        {"mat3(1 2 3 (4 5 6) 7 8 9)", AttrType::Mat3, {1, 2, 3, 4, 5, 6, 7, 8, 9}},
        {"MAT4(1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16)",
         AttrType::Mat4,
         {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}},
    };
    for (const auto& c : cases) {
        const ScalarRead r = scalarOf(c.text);
        EXPECT_TRUE(r.isRead) << c.text;
        EXPECT_EQ(r.info.data.type(), c.type) << c.text;
        const std::span<const double> components = r.info.data.components();
        EXPECT_EQ(std::vector<double>(components.begin(), components.end()), c.components) << c.text;
        EXPECT_EQ(r.info.scalarTailToken.type, Type::Parens);
    }
}

TEST(Scalar, failsOnWhatItCannotRead) {
    const struct {
        const char* text;
        bool isConsumed;
        AttrType type;
    } cases[] = {
        {"foo(1 2)", false, AttrType::Null},
        {"vec2 (1", false, AttrType::Null},
        {"vec2", false, AttrType::Null},
        {"null", false, AttrType::Null},
        {"int(5)", false, AttrType::Null},
        {";", false, AttrType::Null},
        {"vec3(1 2)", true, AttrType::Vec3}, // consumed, and the type is recorded
        {"vec3(1 2 1-2)", true, AttrType::Vec3},
        {"rgba(1 2)", true, AttrType::Rgba},
        {"mat3(1 2 3 4 5 6 7 8)", true, AttrType::Mat3},
        {"mat4(1 2 3 4 5 6 7 8 9 10 11 12 13 14 15)", true, AttrType::Mat4},
        {"1-2", true, AttrType::Int},
        {"1e-5", true, AttrType::Int},
        {"18446744073709551615u", true, AttrType::UInt},
        {"1.2.3", true, AttrType::Real},
    };
    for (const auto& c : cases) {
        const ScalarRead r = scalarOf(c.text);
        EXPECT_FALSE(r.isRead) << c.text;
        EXPECT_EQ(r.isConsumed, c.isConsumed) << c.text;
        EXPECT_EQ(r.info.data.type(), c.type) << c.text;
    }
}

TEST(Scalar, endsAStringAtARawNul) {
    const Reading r = readText("t a; a.x = \"b" + String("\0c", 2) + "\";");
    EXPECT_STREQ(r.value("a.x").asString(), "b");
}

// The result of the recogniser of buffers.
struct BufferRead {
    bool isRead = false;
    std::string error;
    Log log;
    AssignInfo info;
};

static BufferRead bufferOf(const char* keyword, const char* head, const char* body) {
    ParserOn p("=" + String(keyword) + head + body);
    p->consume();
    BufferRead result;
    const ScopedLogSink sink([&](const LogRecord& record) { result.log.push_back(record); });
    try {
        result.isRead = p->buffer(result.info);
    } catch (const ReadError& error) {
        result.error = error.what();
    }
    return result;
}

TEST(Buffer, readsNumbersOfEveryType) {
    const struct {
        const char* keyword;
        DataType type;
    } keywords[] = {
        {"char", DataType::Char},     {"byte", DataType::Byte},     {"int16", DataType::Int16},
        {"int32", DataType::Int32},   {"int64", DataType::Int64},   {"uint16", DataType::UInt16},
        {"uint32", DataType::UInt32}, {"uint64", DataType::UInt64}, {"float", DataType::Float},
        {"double", DataType::Double}, {"vec2f", DataType::Vec2f},   {"vec3f", DataType::Vec3f},
        {"vec4f", DataType::Vec4f},   {"pos2f", DataType::Pos2f},   {"pos3f", DataType::Pos3f},
        {"quatf", DataType::Quatf},   {"mat3f", DataType::Mat3f},   {"mat4f", DataType::Mat4f},
        {"rgbf", DataType::Rgbf},     {"rgbaf", DataType::Rgbaf},   {"hsvf", DataType::Hsvf},
        {"hslf", DataType::Hslf},     {"vec2d", DataType::Vec2d},   {"vec3d", DataType::Vec3d},
        {"vec4d", DataType::Vec4d},   {"pos2d", DataType::Pos2d},   {"pos3d", DataType::Pos3d},
        {"quatd", DataType::Quatd},   {"mat3d", DataType::Mat3d},   {"mat4d", DataType::Mat4d},
        {"rgbd", DataType::Rgbd},     {"rgbad", DataType::Rgbad},   {"hsvd", DataType::Hsvd},
        {"hsld", DataType::Hsld},     {"vec2i", DataType::Vec2i},   {"vec3i", DataType::Vec3i},
        {"vec4i", DataType::Vec4i},   {"pos2i", DataType::Pos2i},   {"pos3i", DataType::Pos3i},
        {"mat3i", DataType::Mat3i},   {"mat4i", DataType::Mat4i},   {"vec2u", DataType::Vec2u},
        {"vec3u", DataType::Vec3u},   {"vec4u", DataType::Vec4u},   {"rgb8", DataType::Rgb8},
        {"rgba8", DataType::Rgba8},   {"argb8", DataType::Argb8},   {"colorref", DataType::ColorRef},
    };
    for (const auto& k : keywords) {
        for (const String& keyword : {String(k.keyword)}) {
            const u32 components = elementLayout(k.type).components;
            std::string body = "{";
            for (u32 i = 0; i < 2 * components; ++i)
                body += std::to_string(i + 1) + " ";
            const BufferRead r = bufferOf(keyword.buf(), "[2]", (body + "}").c_str());
            ASSERT_TRUE(r.isRead) << k.keyword;
            EXPECT_EQ(r.log, Log{}) << k.keyword;
            EXPECT_EQ(r.info.data.type(), AttrType::Buffer);
            EXPECT_EQ(r.info.data.dataType(), k.type);
            EXPECT_EQ(r.info.data.count(), 2U);
            Scene scene;
            scene.createNode("t", "n")->createInput("b", AttrType::Null)->assign(r.info.data);
            std::string json;
            writeSceneJson(scene, {.isCompact = true}, [&](std::string_view piece) { json += piece; });
            std::string data = "\"data\":[";
            for (u32 i = 0; i < 2 * components; ++i)
                data += std::to_string(i + 1) + (i + 1 == 2 * components ? "]" : ",");
            EXPECT_NE(json.find(data), std::string::npos) << k.keyword << json;
        }
    }
    EXPECT_EQ(bufferOf("FLOAT", "[1]", "{2}").info.data.elements<float>()[0], 2) << "keywords have no case";
    for (const char* none : {"bool", "ptr", "xformf", "aabbf", "obbf", "null", "vec3", "string", "uint8", "quati"})
        EXPECT_FALSE(bufferOf(none, "[1]", "{1}").isRead) << none;
}

TEST(Buffer, rejectsOtherTokensWithoutConsuming) {
    for (const char* text : {"float {1 2}", "float[2]", "float", "5", "foo[1] {1}"}) {
        ParserOn p(text);
        AssignInfo info;
        EXPECT_FALSE(p->buffer(info)) << text;
        EXPECT_EQ(p->position(), (TextPosition{0, 0})) << text;
    }
}

TEST(Buffer, needsNoNumbersWhenEmpty) {
    for (const char* body : {"{}", "{1 2}", "{-}"}) {
        const BufferRead r = bufferOf("float", "[0]", body);
        EXPECT_TRUE(r.isRead);
        EXPECT_EQ(r.log, Log{});
        EXPECT_EQ(r.info.data.bytes().data(), nullptr);
        EXPECT_EQ(r.info.data.dataType(), DataType::Float);
    }
}

TEST(Buffer, reportsWhatIsWrong) {
    const struct {
        const char* keyword;
        const char* head;
        const char* body;
        const char* error; // thrown; END is the column of the end of the value
        const char* warning;
    } cases[] = {
        {"int32", "[3]", "{1  2 3}", "", ""}, // two spaces
        {"int32", "[2]", "{1 2 3}", "BUFFER ERROR (1,END): Cannot add 3 @ index 2 of int32[2]..", ""},
        {"vec3f", "[1]", "{1 2 3 4}", "BUFFER ERROR (1,END): Cannot add 4 @ index 3 of vec3f[1]..", ""},
        {"vec3f", "[2]", "{1 2 3 4}", "", "Too few elements (1) for vec3f[2] buffer, remainder set to zero."},
        {"float", "[2]", "{}", "", "Too few elements (0) for float[2] buffer, remainder set to zero."},
        {"double", "[2]", "{1 -}", "PARSE ERROR (1,END): Failed to read 'double' buffer..", ""},
        {"Double", "[3]", "{1 -}", "PARSE ERROR (1,END): Failed to read 'Double' buffer..",
         "Too few elements (2) for Double[3] buffer, remainder set to zero."},
        {"byte", "[2]", "{256 1}", "PARSE ERROR (1,END): Failed to read 'byte' buffer..", ""},
        {"char", "[1]", "{128}", "PARSE ERROR (1,END): Failed to read 'char' buffer..", ""},
        {"int32", "[1]", "{1.0}", "PARSE ERROR (1,END): Failed to read 'int32' buffer..", ""},
        {"uint32", "[1]", "{-1}", "PARSE ERROR (1,END): Failed to read 'uint32' buffer..", ""},
        {"float", "[]", "{1}", "PARSE ERROR (1,END): invalid buffer element count: [].", ""},
        {"float", "[*]", "{1}", "PARSE ERROR (1,END): invalid buffer element count: [*].", ""},
        {"float", "[ 1 ]", "{1}", "", ""},
        {"float", "[1 2]", "{1}", "PARSE ERROR (1,END): invalid buffer element count: [1 2].", ""},
        {"float", "[99999999999999999999]", "{1}",
         "PARSE ERROR (1,END): invalid buffer element count: [99999999999999999999].", ""},
        // One element more than 16 GiB; a size that does not fit in 64 bits
        {"byte", "[17179869185]", "{1}", "PARSE ERROR (1,END): invalid buffer element count: [17179869185].", ""},
        {"mat4d", "[18446744073709551615]", "{1}",
         "PARSE ERROR (1,END): invalid buffer element count: [18446744073709551615].", ""},
        {"byte", "[4]", "{.1u}", "PARSE ERROR (1,END): compressed payload: invalid character 'u'.", ""},
        {"byte", "[4]", "{.789}", "PARSE ERROR (1,END): compressed payload: odd number of hexadecimal digits.", ""},
        {"byte", "[4]", "{.}", "PARSE ERROR (1,END): compressed payload: corrupt data.", ""},
        {"float", "[4]", "{.5 1 2 3}", "", ""}, // never a payload
        {"uint16", "[1]", "{.5}", "PARSE ERROR (1,END): Failed to read 'uint16' buffer..", ""},
    };
    for (const auto& c : cases) {
        const BufferRead r = bufferOf(c.keyword, c.head, c.body);
        const std::string end = std::to_string(1 + std::strlen(c.keyword) + std::strlen(c.head) + std::strlen(c.body));
        std::string error = c.error;
        if (const std::size_t place = error.find("END"); place != std::string::npos)
            error.replace(place, 3, end);
        EXPECT_EQ(r.error, error) << c.keyword << c.head << c.body;
        EXPECT_EQ(r.isRead, *c.error == '\0') << c.keyword << c.head << c.body;
        const i32 keyword = static_cast<i32>(1 + std::strlen(c.keyword)); // the column of its end
        EXPECT_EQ(r.log, *c.warning ? (Log{warning(1, keyword, c.warning)}) : Log{}) << c.keyword << c.head << c.body;
    }
    EXPECT_EQ(bufferOf("float", "[4]", "{.5 1 2 3}").info.data.elements<float>()[0], 0.5F);
    const BufferRead partial = bufferOf("vec3f", "[2]", "{1 2 3 4}");
    const auto floats = partial.info.data.elements<float>();
    EXPECT_EQ(std::vector<float>(floats.begin(), floats.end()), (std::vector<float>{1, 2, 3, 4, 0, 0}));
    const BufferRead unread = bufferOf("double", "[2]", "{1 -}");
    EXPECT_EQ(unread.info.data.elements<double>()[0], 1);
    EXPECT_EQ(unread.info.data.elements<double>()[1], 0);
}

TEST(Buffer, obeysTheSceneLimit) {
    Reading r;
    r.scene->setLimits({.maxBufferBytes = 8});
    readMore(r, "t n; n.a = float[2] {1 2}; n.b = double[1] {1}; n.c = float[3] {1 2 3};");
    EXPECT_EQ(r.log, (Log{error(1, 70, "PARSE ERROR (1,70): invalid buffer element count: [3].")}));
    EXPECT_NE(r.input("n.b"), nullptr);
}

TEST(Buffer, inflatesPayloads) {
    const std::string bytes = "\x01\x02\xFF\x7F";
    std::unique_ptr<libdeflate_compressor, void (*)(libdeflate_compressor*)> compressor(libdeflate_alloc_compressor(6),
                                                                                        libdeflate_free_compressor);
    u8 stream[64];
    const std::size_t size =
        libdeflate_zlib_compress(compressor.get(), bytes.data(), bytes.size(), stream, sizeof stream);
    std::string payload = ".";
    for (std::size_t i = 0; i < size; ++i)
        payload += std::string(String::format("%02X", stream[i]).view()) + (i % 4 == 3 ? "\n  " : "");
    for (const char* type : {"byte[4]", "char[6]", "rgba8[1]", "rgb8[2]", "argb8[1]", "colorref[1]"}) {
        const Reading r = readText("t n; n.b = " + String(type) + " { " + String(std::string_view(payload)) + " };");
        EXPECT_EQ(r.log, Log{}) << type;
        const auto read = r.value("n.b").bytes();
        EXPECT_EQ(std::memcmp(read.data(), bytes.data(), 4), 0) << type;
        for (std::size_t i = 4; i < read.size(); ++i)
            EXPECT_EQ(static_cast<int>(read[i]), 0) << "the rest stays zero";
    }
    const Reading r = readText("t n; n.b = byte[3] {" + String(std::string_view(payload)) + "};");
    EXPECT_EQ(r.log[0].text, "PARSE ERROR (4,9): compressed payload: more than 3 bytes.");
}

TEST(Buffer, storesNumbersUnaligned) {
    u8 bytes[16] = {};
    EXPECT_TRUE(VrnParser::parseElem("-2", DataType::Int64, bytes + 1));
    i64 value = 0;
    std::memcpy(&value, bytes + 1, sizeof value);
    EXPECT_EQ(value, -2);
    for (const DataType type : {DataType::Null, DataType::Bool, DataType::Ptr, DataType::Vec2f})
        EXPECT_FALSE(VrnParser::parseElem("1", type, bytes)) << dataTypeName(type);
}

} // namespace vrn::test
