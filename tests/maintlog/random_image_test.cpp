// Random working files and flash images: whatever they hold, a boot leaves a log that can be used.
#include <map>
#include <optional>
#include <random>

#include "board/share.h"
#include "log/console_lines.h"
#include "log/log_bytes.h"

namespace
{

const uint32_t kBoots = share_of(2500);

class Draw
{
  public:
    explicit Draw(uint32_t seed) : random_(seed) {}

    // 0 .. count-1
    uint32_t below(uint32_t count) { return static_cast<uint32_t>(random_() % count); }

    // Mostly around the limits.
    uint16_t field()
    {
        static constexpr uint16_t kEdges[] = {0, 1, 2, 3, 999, 1000, 1001, 1002, 32768, 65535};
        return below(4) == 0 ? static_cast<uint16_t>(below(65536)) : kEdges[below(10)];
    }

    Bytes bytes(size_t size)
    {
        Bytes result;
        for (size_t at = 0; at < size; ++at) {
            result += static_cast<char>(below(256));
        }
        return result;
    }

    Bytes workingFile()
    {
        switch (below(4)) {
        case 0:
            return bytes(below(40));
        case 1:
            return header_bytes({below(9), field(), field(), field(), field()})
                .substr(0, below(13));
        default:
            return header_bytes({below(9), field(), field(), field(), field()}) + bytes(below(250));
        }
    }

    Bytes flashImage()
    {
        if (below(8) == 0) {
            return bytes(below(400));
        }
        // A valid image first, then up to two damages.
        const uint16_t number = below(20) == 0 ? uint16_t{1000} : static_cast<uint16_t>(below(5));
        Bytes image =
            image_make({below(100), number, field(), static_cast<uint16_t>(1 + below(3)), 0},
                       bytes(kRecordSize * number));
        for (uint32_t damage = below(3); damage > 0; --damage) {
            damage_do(image);
        }
        return image;
    }

  private:
    void damage_do(Bytes& image)
    {
        const auto size = static_cast<uint32_t>(image.size());
        switch (below(6)) {
        case 0:
            image.resize(below(size + 1));
            break;
        case 1:
            image += bytes(below(200));
            break;
        case 2:
            if (size > 0) {
                image[below(size)] = static_cast<char>(below(256));
            }
            break;
        case 3:
            if (size >= 4) {
                image.replace(0, 4, Bytes(4, '\xFF'));
            }
            break;
        default:
            if (size >= kHeaderSize) {
                image.replace(4 + 2 * below(4), 2, le16(field()));
            }
            break;
        }
    }

    std::mt19937 random_;
};

// What a boot has to make of the two files: the resulting log, and which message says so.
const std::string kListed = "head.seq_num";

struct Outcome {
    std::string message;
    Bytes file;
};

Outcome rebuild_model(const Bytes& image)
{
    if (image.size() < kHeaderSize) {
        return {kNoFlash, fresh_log()};
    }
    const HeaderFields header = header_get(image);
    if (header.seq_num == 0xFFFFFFFF) {
        return {kErased, fresh_log()};
    }
    const size_t size = kHeaderSize + kRecordSize * header.number;
    if (header.number > 1000 || header.version == 0 || image.size() < size ||
        (header.number > 0 &&
         checksum_model(image.substr(kHeaderSize, size - kHeaderSize)) != header.checksum)) {
        return {kRefused, fresh_log()};
    }
    return {kListed, image.substr(0, size)};
}

Outcome boot_model(const std::optional<Bytes>& working, const Bytes& image)
{
    if (working && working->size() >= kHeaderSize) {
        const HeaderFields header = header_get(*working);
        if (header.number <= 1000 && header.location <= 1000) {
            return {kWarm, *working};
        }
    }
    return rebuild_model(image);
}

using RandomImage = BoardTest;

TEST_F(RandomImage, LeavesAKeptARebuiltOrAnEmptyLog)
{
    Draw draw(20060301);
    std::map<std::string, uint32_t> seen;
    for (uint32_t boot = 0; boot < kBoots; ++boot) {
        SCOPED_TRACE("boot " + std::to_string(boot));
        std::optional<Bytes> working;
        board.file_remove(kSystemLog);
        if (draw.below(2) == 0) {
            working = draw.workingFile();
            board.file_put(kSystemLog, *working);
        }
        const Bytes image = draw.flashImage();
        board.file_put(kFlashImage, image);
        board.restart();
        ASSERT_EQ(maintlogfile_main(), kExit);
        ASSERT_EQ(board.open_descriptors(), 0U);
        ASSERT_EQ(board.held_locks(), 0U);

        const Outcome expected = boot_model(working, image);
        const Bytes file = board.file_get(kSystemLog);
        ASSERT_EQ(file, expected.file);
        ASSERT_NE(board.console.find(expected.message), std::string::npos) << board.console;
        ASSERT_NE(board.console.find(working ? kWarm : kCold), std::string::npos);
        ASSERT_EQ(board.file_get(kFlashImage), image);
        ++seen[expected.message];

        // Kept: within the ring. Rebuilt: within the ring, of some version, as long as it says.
        const HeaderFields header = header_get(file);
        ASSERT_LE(header.number, 1000);
        if (expected.message == kWarm) {
            ASSERT_LE(header.location, 1000);
        } else {
            ASSERT_NE(header.version, 0);
            ASSERT_EQ(file.size(), kHeaderSize + kRecordSize * header.number);
        }
    }
    for (const std::string& outcome : {kWarm, kNoFlash, kErased, kRefused, kListed}) {
        EXPECT_GE(seen[outcome], kBoots / 50) << outcome;
    }
}

} // namespace
