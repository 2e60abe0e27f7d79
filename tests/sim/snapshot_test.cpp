// A unit made of a snapshot: whatever can be read is answered the same.
#include "tools/maintsim/snapshot.h"

#include "sim/answer_learning.h"
#include "sim/state_text.h"
#include "sim/unit_state_fixture.h"
#include "tools/maintsim/json_reader.h"

namespace
{

std::string hex_of(const std::string& bytes)
{
    std::string text;
    for (const char byte : bytes) {
        char pair[4];
        snprintf(pair, sizeof pair, "%02x", static_cast<unsigned char>(byte));
        text += pair;
    }
    return text;
}

constexpr char kFirst[] = R"({"snapshot":1,"program":"maintctl","version":"1.0.0","own_id":1})";

// Requests that read, with the keys of a drawn state's tables, each once.
struct Asked {
    const RequestForm* form;
    std::string record;
    bool clock;
};

std::vector<Asked> asked_all()
{
    std::vector<Asked> asked;
    for (uint32_t number = kRequestsFirst; number <= kRequestsLast; ++number) {
        const RequestForm* form = requestForm_find(number);
        // A counter that is read restarts: a snapshot does not ask for it.
        if (form == nullptr || form->fills_count == 0 || number == 0x6B9A || number == 0x6BA0) {
            continue;
        }
        const bool phy = number == 0x6B87 || number == 0x6B98;
        for (unsigned key = 0; key < (number == 0x6B42 ? 0x200U : 10U);
             key += number == 0x6B42 ? 2 : 1) {
            std::string record(form->size, '\x5A');
            for (size_t i = 0; i < std::min<size_t>(form->fills, 4); ++i) {
                record[i] = static_cast<char>(i == 0 ? key : i == 1 ? key >> 8 : 0);
            }
            for (unsigned mii = 0; mii < (phy ? 32U : 1U); ++mii) {
                if (phy) {
                    record[2] = static_cast<char>(mii);
                }
                asked.push_back({form, record, false});
            }
        }
    }
    for (const uint32_t number : {kRtcTimeRead, kRtcStatusRead}) {
        const RequestForm* form = rtcRequestForm_find(number);
        asked.push_back({form, std::string(form->size, '\x5A'), true});
    }
    return asked;
}

UnitAnswer ask(UnitState& state, const Asked& asked, std::string& record)
{
    record = asked.record;
    return asked.clock ? unitState_serveRtc(state, *asked.form, record.data(), 0)
                       : unitState_serveFpga(state, *asked.form, record.data(), 0, 0);
}

std::string answer_text(const Asked& asked, const UnitAnswer& answer, const std::string& after)
{
    char number[16];
    snprintf(number, sizeof number, "0x%04X", asked.form->number);
    return std::string(R"({"device":"/dev/)") + (asked.clock ? "rtc" : "fpga") +
           R"(","request":")" + number + R"(","before":")" + hex_of(asked.record) +
           R"(","after":")" + hex_of(after) + R"(","result":)" + std::to_string(answer.result) +
           (answer.result < 0 ? ",\"errno\":" + std::to_string(answer.error) : "") + "}";
}

std::string snapshot_text(UnitState& state)
{
    std::string text = std::string(kFirst) + "\n";
    for (const Asked& asked : asked_all()) {
        std::string after;
        const UnitAnswer answer = ask(state, asked, after);
        text += R"({"command":"RD_X","code":"0x0001","asked":"00","answers":[)" +
                answer_text(asked, answer, after) + R"(],"result":0,"record":"00","fields":{}})" +
                "\n";
    }
    return text + R"({"unknown":[{"command":"RD_Y","why":"the counters would restart"}]})" + "\n";
}

TEST(Snapshot, OfAnyStateIsAnsweredTheSame)
{
    for (uint32_t number = 0; number < 40; ++number) {
        SCOPED_TRACE(number);
        UnitState seen = state_draw(number);
        seen.rtc_runs = false;
        seen.rtc.result = number % 3 == 0 ? -1 : 0;
        seen.fpga.results = {{0x6B02, 5}, {0x6B42, number % 2 == 0 ? -1 : 0}};
        seen.fpga.filled.clear();
        seen.failures = {{0x6B39, {1, 0, EBUSY}}};
        if (number % 3 == 1) {
            seen.failures[kRtcStatusRead] = {1, 0, EINVAL};
        }
        Snapshot snapshot;
        std::string fault;
        ASSERT_TRUE(snapshot_parse(snapshot_text(seen), snapshot, fault)) << fault;
        EXPECT_TRUE(snapshot.partly.empty());
        for (const Asked& asked : asked_all()) {
            std::string expected;
            std::string record;
            const UnitAnswer answer = ask(seen, asked, expected);
            ASSERT_EQ(ask(snapshot.state, asked, record), answer) << asked.form->number;
            ASSERT_EQ(hex_of(record), hex_of(expected)) << asked.form->number;
        }
    }
}

TEST(Snapshot, HasFiles)
{
    Snapshot snapshot;
    std::string fault;
    const std::string text = std::string(kFirst) + R"(
{"file":"/tmp/serialno","bytes":"313233"}
{"file":"/tmp/mtu_datasize","error":"No such file or directory"}
{"config":{"PPPOE_MTU":"1454","SELECT_MTU":"PPPOE_MTU","OWN_VPN_ID":""}}
)";
    ASSERT_TRUE(snapshot_parse(text, snapshot, fault)) << fault;
    EXPECT_EQ(snapshot.files, (std::map<std::string, std::string>{
                                  {"/tmp/serialno", "123"},
                                  {"/conf/config", "PPPOE_MTU='1454'\nSELECT_MTU='PPPOE_MTU'\n"
                                                   "OWN_VPN_ID=''\n"}}));
    EXPECT_EQ(snapshot.missing, std::vector<std::string>{"/tmp/mtu_datasize"});
}

TEST(Snapshot, TellsWhatFailedForSomeIndexesAlone)
{
    const Asked good{requestForm_find(0x6B83), std::string("\1\0\0\0\0\0\0\0", 8), false};
    const Asked bad{requestForm_find(0x6B83), std::string("\2\0\0\0\0\0\0\0", 8), false};
    const std::string after("\1\0\0\0\7\0\0\0", 8);
    const std::string text = std::string(kFirst) + "\n{\"answers\":[" +
                             answer_text(good, {0, 0}, after) + "," +
                             answer_text(bad, {-1, EIO}, bad.record) + "]}\n";
    Snapshot snapshot;
    std::string fault;
    ASSERT_TRUE(snapshot_parse(text, snapshot, fault)) << fault;
    EXPECT_EQ(snapshot.partly, (std::map<uint32_t, size_t>{{0x6B83, 1}}));
    EXPECT_TRUE(snapshot.state.failures.empty());
    EXPECT_EQ(snapshot.state.fpga.indexed_words, (std::map<uint32_t, uint32_t>{{1, 7}}));
}

// One result is told for all requests of a number only if all of them had it.
TEST(Snapshot, KeepsAResultThatAllHad)
{
    const std::string asked("\1\0\0\0\0\0\0\0", 8);
    const std::string another("\2\0\0\0\0\0\0\0", 8);
    const Asked one{requestForm_find(0x6B83), asked, false};
    const Asked other{requestForm_find(0x6B83), another, false};
    for (const int result : {3, 5}) {
        const std::string text = std::string(kFirst) + "\n{\"answers\":[" +
                                 answer_text(one, {3, 0}, asked) + "," +
                                 answer_text(other, {result, 0}, another) + "]}\n";
        Snapshot snapshot;
        std::string fault;
        ASSERT_TRUE(snapshot_parse(text, snapshot, fault)) << fault;
        EXPECT_EQ(snapshot.state.fpga.results, result == 3 ? (std::map<uint32_t, int>{{0x6B83, 3}})
                                                           : (std::map<uint32_t, int>{}));
    }
}

// What an answer tells goes to the table that answers the same.
TEST(Snapshot, LearnsFromRecordsWithTwoKeys)
{
    const auto learnt = [](uint32_t number, const std::string& after) {
        FpgaModel fpga;
        const RequestForm* form = requestForm_find(number);
        std::string record = after;
        record.resize(form->size);
        fpgaAnswer_learn(fpga, *form, record, record);
        return fpga;
    };
    const std::string counter("\3\0\0\0\x11\0\0\0\x20\0\0\0", 12);
    const std::map<std::pair<uint32_t, uint32_t>, uint32_t> counters{{{3, 32}, 17}};
    EXPECT_EQ(learnt(0x6B9A, counter).counters, counters);
    EXPECT_TRUE(learnt(0x6B9A, counter).counters_alt.empty());
    EXPECT_EQ(learnt(0x6BA0, counter).counters_alt, counters);
    EXPECT_TRUE(learnt(0x6BA0, counter).counters.empty());
    const FpgaModel words = learnt(0x6B3E, std::string("\2\0\0\0\x22\x11\x44\x33\1\0", 10));
    ASSERT_EQ(words.unit_words.size(), 1U);
    EXPECT_EQ(words.unit_words.begin()->first.first, 2U);
    EXPECT_EQ(words.unit_words.begin()->first.second, 1U);
    EXPECT_EQ(words.unit_words.begin()->second.first, 0x1122U);
    EXPECT_EQ(words.unit_words.begin()->second.second, 0x3344U);
}

constexpr struct {
    const char* text;
    const char* fault;
} kRefused[] = {
    {"", "not a snapshot"},
    {"\n", "not a snapshot"},
    {"{}\n", "not a snapshot"},
    {R"({"snapshot":2})", "a snapshot of version 2, not 1"},
    {R"({"snapshot":"1"})", "not a snapshot"},
    {"{\"snapshot\":1}\nhello", "line 2: not of a snapshot"},
    {"{\"snapshot\":1}\n{}", "line 2: not of a snapshot"},
    {"{\"snapshot\":1}\n{\"unknown\":[]}\n{\"unknown\":[]", "line 3: not of a snapshot"},
    {"{\"snapshot\":1}\n{\"file\":\"/etc/passwd\",\"bytes\":\"00\"}", "line 2: not of a snapshot"},
    {"{\"snapshot\":1}\n{\"file\":\"/conf/../../x\",\"bytes\":\"00\"}",
     "line 2: not of a snapshot"},
    {"{\"snapshot\":1}\n{\"file\":\"/tmp/serialno\",\"bytes\":\"0\"}", "line 2: not of a snapshot"},
    {"{\"snapshot\":1}\n{\"file\":\"/tmp/serialno\"}", "line 2: not of a snapshot"},
    {"{\"snapshot\":1}\n{\"config\":{\"A\":\"1'\\nB='2\"}}", "line 2: not of a snapshot"},
    {"{\"snapshot\":1}\n{\"config\":{\"A=B\":\"1\"}}", "line 2: not of a snapshot"},
    {"{\"snapshot\":1}\n{\"answers\":[{\"device\":\"/dev/fpga\",\"request\":\"0x6B42\","
     "\"before\":\"0000000000000000\",\"after\":\"00\",\"result\":0}]}",
     "line 2: not of a snapshot"},
    {"{\"snapshot\":1}\n{\"answers\":[{\"device\":\"/dev/fpga\",\"request\":\"0x6B42\","
     "\"before\":\"00\",\"after\":\"00\",\"result\":0}]}",
     "line 2: not of a snapshot"},
    {"{\"snapshot\":1}\n{\"answers\":[{\"device\":\"/dev/mem\",\"request\":\"0x6BA2\","
     "\"result\":0}]}",
     "line 2: not of a snapshot"},
};

TEST(Snapshot, ThatIsNoneIsRefused)
{
    for (const auto& [text, expected] : kRefused) {
        Snapshot snapshot;
        std::string fault;
        EXPECT_FALSE(snapshot_parse(text, snapshot, fault)) << text;
        EXPECT_EQ(fault, expected) << text;
    }
}

TEST(Snapshot, OfAnyBytesIsTakenOrRefused)
{
    UnitState seen = state_draw(1);
    seen.fpga.filled.clear();
    std::string good = snapshot_text(seen);
    good.resize(good.find('\n', 6000) + 1);
    RequestDraw draw(1);
    size_t taken = 0;
    for (int i = 0; i < 10000; ++i) {
        std::string text = good;
        for (uint32_t change = 0; change <= draw.below(3); ++change) {
            const size_t at = draw.below(static_cast<uint32_t>(text.size()));
            switch (draw.below(3)) {
            case 0:
                text[at] = static_cast<char>(draw.number());
                break;
            case 1:
                text.resize(at);
                break;
            default:
                text.insert(at, 1, "{}[]\",:\\u0"[draw.below(10)]);
            }
            if (text.empty()) {
                break;
            }
        }
        Snapshot snapshot;
        std::string fault;
        if (snapshot_parse(text, snapshot, fault)) {
            ++taken;
        } else {
            ASSERT_NE(fault, "");
            ASSERT_EQ(fault.find('\n'), std::string::npos);
        }
    }
    EXPECT_GT(taken, 500U);
    EXPECT_LT(taken, 9500U);
}

TEST(Json, IsRead)
{
    JsonNode node;
    ASSERT_TRUE(json_read(
        R"( { "a" : [ 1 , -2 , true , false , null , "x\"\\\/\b\f\n\r\t\u00ff" ] , "b":{}})"
        "\n",
        node));
    const JsonNode* list = node.find("a", JsonNode::Kind::kList);
    ASSERT_NE(list, nullptr);
    ASSERT_EQ(list->items.size(), 6U);
    EXPECT_EQ(list->items[0].number, 1);
    EXPECT_EQ(list->items[1].number, -2);
    EXPECT_EQ(list->items[2].number, 1);
    EXPECT_EQ(list->items[2].kind, JsonNode::Kind::kFlag);
    EXPECT_EQ(list->items[3].number, 0);
    EXPECT_EQ(list->items[4].kind, JsonNode::Kind::kNull);
    EXPECT_EQ(list->items[5].text, "x\"\\/\b\f\n\r\t\xFF");
    EXPECT_NE(node.find("b", JsonNode::Kind::kObject), nullptr);
    EXPECT_EQ(node.find("b", JsonNode::Kind::kList), nullptr);
    EXPECT_EQ(node.find("c", JsonNode::Kind::kObject), nullptr);
}

TEST(Json, ThatIsNoneIsRefused)
{
    for (const char* text : {"",
                             " ",
                             "{",
                             "}",
                             "[",
                             "[1",
                             "[1,",
                             "[1,]",
                             "{\"a\"}",
                             "{\"a\":}",
                             "{\"a\":1",
                             "{a:1}",
                             "{\"a\":1,}",
                             "\"",
                             "\"\\",
                             "\"\\x\"",
                             "\"\\u00\"",
                             "\"\\u0100\"",
                             "\"\\u00g0\"",
                             "1 2",
                             "{} {}",
                             "nul",
                             "tru",
                             "-",
                             "1.5",
                             "99999999999999999999",
                             "'a'"}) {
        JsonNode node;
        EXPECT_FALSE(json_read(text, node)) << text;
    }
    JsonNode node;
    EXPECT_TRUE(json_read(std::string(16, '[') + std::string(16, ']'), node));
    EXPECT_FALSE(json_read(std::string(1000000, '['), node));
    EXPECT_FALSE(json_read(std::string(1000, '[') + std::string(1000, ']'), node));
}

} // namespace
