#include "tools/maintsim/snapshot.h"

#include <algorithm>
#include <cstring>
#include <set>

#include "sim/answer_learning.h"
#include "sim/state_text.h"
#include "tools/maintsim/json_reader.h"

namespace
{

using Kind = JsonNode::Kind;

// The files that a snapshot tells of.
constexpr std::string_view kConfigPath = "/conf/config";
constexpr std::string_view kPaths[] = {kConfigPath, "/tmp/serialno", "/tmp/mtu_datasize"};

// What came of all requests of a number.
struct Answers {
    size_t good = 0;
    size_t failed = 0;
    std::set<int> results; // of the good ones
    int failure = 0;       // what the last that failed returned, and its error
    int error = 0;
    bool filled = false; // one that failed had filled the record all the same
};

struct Parse {
    Snapshot& snapshot;
    std::map<uint32_t, Answers> answers;
};

bool hex_read(const std::string& digits, std::string& bytes)
{
    static constexpr std::string_view kDigits = "0123456789abcdef";
    bytes.clear();
    for (size_t i = 0; i + 1 < digits.size(); i += 2) {
        const size_t high = kDigits.find(digits[i]);
        const size_t low = kDigits.find(digits[i + 1]);
        if (high == std::string_view::npos || low == std::string_view::npos) {
            return false;
        }
        bytes += static_cast<char>(high << 4 | low);
    }
    return digits.size() % 2 == 0;
}

bool bytes_find(const JsonNode& node, std::string_view name, std::string& bytes)
{
    const JsonNode* member = node.find(name, Kind::kText);
    return member == nullptr || hex_read(member->text, bytes);
}

bool request_find(const JsonNode& answer, uint32_t& request)
{
    const JsonNode* member = answer.find("request", Kind::kText);
    uint64_t number = 0;
    std::string fault;
    if (member == nullptr || !number_parse(member->text, UINT32_MAX, number, fault)) {
        return false;
    }
    request = static_cast<uint32_t>(number);
    return true;
}

void rtcAnswer_learn(RtcModel& rtc, uint32_t request, const std::string& after)
{
    if (request == kRtcTimeRead) {
        memcpy(rtc.time.data(), after.data(), sizeof rtc.time);
    } else if (request == kRtcStatusRead) {
        memcpy(&rtc.status, after.data(), sizeof rtc.status);
    }
}

bool answer_take(Parse& parse, const JsonNode& answer)
{
    const JsonNode* device = answer.find("device", Kind::kText);
    const JsonNode* result = answer.find("result", Kind::kNumber);
    const JsonNode* error = answer.find("errno", Kind::kNumber);
    uint32_t request = 0;
    std::string before;
    std::string after;
    if (device == nullptr || result == nullptr || !request_find(answer, request) ||
        !bytes_find(answer, "before", before) || !bytes_find(answer, "after", after)) {
        return false;
    }
    const bool clock = device->text == "/dev/rtc";
    const RequestForm* form = clock ? rtcRequestForm_find(request) : requestForm_find(request);
    if ((!clock && device->text != "/dev/fpga") || form == nullptr ||
        (form->argument != Argument::kValue &&
         (before.size() < form->size || after.size() < form->size))) {
        return false;
    }
    Answers& answers = parse.answers[request];
    if (result->number < 0) {
        ++answers.failed;
        answers.failure = static_cast<int>(result->number);
        answers.error = error == nullptr ? EIO : static_cast<int>(error->number);
        if (before == after) {
            return true;
        }
        answers.filled = true;
    } else {
        ++answers.good;
        answers.results.insert(static_cast<int>(result->number));
    }
    before.resize(form->size);
    after.resize(form->size);
    UnitState& state = parse.snapshot.state;
    clock ? rtcAnswer_learn(state.rtc, request, after)
          : fpgaAnswer_learn(state.fpga, *form, before, after);
    return true;
}

bool file_take(Snapshot& snapshot, const JsonNode& line, const std::string& path)
{
    if (std::ranges::find(kPaths, path) == std::end(kPaths)) {
        return false;
    }
    const JsonNode* bytes = line.find("bytes", Kind::kText);
    if (bytes != nullptr) {
        return hex_read(bytes->text, snapshot.files[path]);
    }
    snapshot.missing.push_back(path);
    return line.find("error", Kind::kText) != nullptr;
}

bool config_take(Snapshot& snapshot, const JsonNode& config)
{
    std::string& text = snapshot.files[std::string(kConfigPath)];
    for (size_t i = 0; i < config.names.size(); ++i) {
        const std::string& key = config.names[i];
        const JsonNode& value = config.items[i];
        if (value.kind != Kind::kText || key.find_first_of("\n='") != std::string::npos ||
            value.text.find_first_of("\n'") != std::string::npos) {
            return false;
        }
        text += key + "='" + value.text + "'\n";
    }
    return true;
}

bool line_take(Parse& parse, const JsonNode& line)
{
    if (const JsonNode* file = line.find("file", Kind::kText)) {
        return file_take(parse.snapshot, line, file->text);
    }
    if (const JsonNode* config = line.find("config", Kind::kObject)) {
        return config_take(parse.snapshot, *config);
    }
    if (line.find("unknown", Kind::kList) != nullptr) {
        return true;
    }
    const JsonNode* answers = line.find("answers", Kind::kList);
    return answers != nullptr && std::ranges::all_of(answers->items, [&](const JsonNode& answer) {
               return answer_take(parse, answer);
           });
}

bool first_good(const JsonNode& line, std::string& fault)
{
    const JsonNode* version = line.find("snapshot", Kind::kNumber);
    if (version == nullptr) {
        fault = "not a snapshot";
    } else if (version->number != 1) {
        fault = "a snapshot of version " + std::to_string(version->number) + ", not 1";
    }
    return fault.empty();
}

void result_put(UnitState& state, uint32_t request, int result)
{
    if (requestForm_find(request) != nullptr) {
        state.fpga.results[request] = result;
    } else {
        state.rtc.result = result;
    }
}

// Results that all requests of a number had.
void results_put(Parse& parse)
{
    UnitState& state = parse.snapshot.state;
    for (const auto& [request, answers] : parse.answers) {
        if (answers.failed > 0 && answers.good > 0) {
            parse.snapshot.partly[request] = answers.failed;
        } else if (answers.filled) {
            result_put(state, request, answers.failure);
            state.fpga.fills_when_failing = true;
        } else if (answers.failed > 0) {
            const bool named = !errorName_text(answers.error).empty();
            state.failures[request] = {1, 0, named ? answers.error : EIO};
        }
        if (answers.results.size() == 1 && *answers.results.begin() != 0) {
            result_put(state, request, *answers.results.begin());
        }
    }
}

} // namespace

bool snapshot_parse(std::string_view text, Snapshot& snapshot, std::string& fault)
{
    Parse parse{snapshot, {}};
    size_t number = 0;
    fault.clear();
    while (!text.empty()) {
        const size_t length = std::min(text.find('\n'), text.size());
        JsonNode line;
        const bool read = json_read(text.substr(0, length), line);
        if (++number == 1) {
            if (!first_good(line, fault)) {
                return false;
            }
        } else if (!read || !line_take(parse, line)) {
            fault = "line " + std::to_string(number) + ": not of a snapshot";
            return false;
        }
        text.remove_prefix(std::min(length + 1, text.size()));
    }
    if (number == 0) {
        fault = "not a snapshot";
        return false;
    }
    results_put(parse);
    return true;
}
