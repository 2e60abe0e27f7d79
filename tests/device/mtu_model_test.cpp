// The limit of the data size against a second computation of it, over all MTUs.
#include <fcntl.h>

#include "device/command_test.h"
#include "device/library_calls.h"

namespace
{

constexpr const char* kMruFile = "/tmp/vornapppoe.mtu";

struct Situation {
    uint32_t mtu; // configured, 0..65535
    int wanType;  // -1: missing
    bool ipsec;
    uint32_t mru;     // 0: no file
    uint32_t present; // register 0x0056
    bool cap;
};

std::ostream& operator<<(std::ostream& out, const Situation& s)
{
    return out << "mtu " << s.mtu << " wan " << s.wanType << " ipsec " << s.ipsec << " mru "
               << s.mru << " present " << s.present << " cap " << s.cap;
}

uint32_t data_size(uint32_t mtu)
{
    return mtu > 26 ? mtu - 26 : 1364;
}

// The limit, computed on its own: the padding and the alignment are searched for.
uint32_t limit_of(const Situation& s)
{
    const uint32_t p = s.wanType == -1 || s.wanType == 5 ? 8 : 0;
    const uint32_t d = data_size(s.mtu);
    const uint32_t m = p == 0 ? 0 : s.mru;
    uint32_t l = m != 0 && m < d ? m : d;
    if (l <= 1187) {
        l = 1188;
    }
    const uint32_t f = (l + p + 18) & 0xFFFF;
    const uint32_t b = f - p;
    uint32_t size = 0;
    if (!s.ipsec) {
        size = b - 42;
    } else {
        const uint32_t first = b - 115;
        size = first + 15;
        for (uint32_t c = first; c < first + 16; ++c) {
            uint32_t padded = c + 26;
            while (padded % 16 != 0) {
                ++padded;
            }
            const uint32_t t = (padded - 26 + p + 100) & 0xFFFF;
            if (f < t) {
                size = c - 1;
                break;
            }
        }
    }
    uint32_t v = 1004;
    while (v + 16 <= size) {
        v += 16;
    }
    v &= 0xFFFC;
    if (s.present != 0 && s.cap && p != 0 && s.present < v) {
        v = s.present;
    }
    return v;
}

// A file of the board that is rewritten in place at one length, which spares the disk.
class SteadyFile
{
  public:
    SteadyFile(const Board& board, const std::string& path)
        : path_(board.host(path)), aside_(path_ + ".aside"),
          descriptor_(open(path_.c_str(), O_RDWR | O_CREAT | O_EXCL, 0600))
    {
    }
    ~SteadyFile() { close(descriptor_); }
    SteadyFile(const SteadyFile&) = delete;
    SteadyFile& operator=(const SteadyFile&) = delete;

    void put(Bytes text) const
    {
        text.resize(100, '\n');
        ASSERT_EQ(pwrite(descriptor_, text.data(), text.size(), 0), 100);
    }

    void present_set(bool present)
    {
        if (present != present_) {
            ASSERT_EQ(present ? rename(aside_.c_str(), path_.c_str())
                              : rename(path_.c_str(), aside_.c_str()),
                      0);
            present_ = present;
        }
    }

  private:
    std::string path_;
    std::string aside_;
    int descriptor_;
    bool present_ = true;
};

class MtuModel : public CommandTest
{
  protected:
    void SetUp() override { board.recording = false; }

    void situation_put(const Situation& s)
    {
        Bytes text = "SELECT_MTU='WAN_MTU'\nWAN_MTU='" + std::to_string(s.mtu) + "'\n";
        if (s.wanType != -1) {
            text += "WAN_TYPE='" + std::to_string(s.wanType) + "'\n";
        }
        config_.put(text + (s.ipsec ? "IPSEC_ENABLE='3'\n" : "IPSEC_ENABLE='0'\n"));
        mru_.present_set(s.mru != 0);
        mru_.put("VORNAMRU=" + std::to_string(s.mru) + "\n");
        board.fpga.registers[0x0054] = 0xEEEE;
        board.fpga.registers[0x0056] = static_cast<uint16_t>(s.present);
    }

    void check(const Situation& s)
    {
        situation_put(s);
        const Bytes cap = le16(s.cap ? 1 : 0);
        ASSERT_EQ(run(WR_MTU_LIMIT, cap), 0) << s;
        const uint32_t expected = limit_of(s);
        ASSERT_EQ(board.fpga.registers[0x0054], expected) << s;
        ASSERT_EQ(board.fpga.registers[0x0056], expected) << s;
        ASSERT_EQ(record(), cap) << s;
        ++runs;
    }

    // The situations of one MTU, by number: 3 WAN types, IPsec or not, 4 MRUs, 3 present limits,
    // capped or not.
    static constexpr uint32_t kSituations = 3 * 2 * 4 * 3 * 2;

    static Situation situation(uint32_t mtu, uint32_t number)
    {
        Situation s{mtu, 0, false, 0, 0, false};
        const auto digit = [&number](uint32_t base) {
            const uint32_t value = number % base;
            number /= base;
            return value;
        };
        s.wanType = std::array{-1, 1, 5}[digit(3)];
        s.ipsec = digit(2) == 1;
        const uint32_t mru = digit(4);
        s.mru = mru == 0 ? 0 : data_size(mtu) + mru - 2; // one below, the data size, one above
        const uint32_t present = digit(3);
        const uint32_t limit = limit_of(s);
        s.present = present == 0 ? 0 : present == 1 ? limit - 1 : limit + 1;
        s.cap = digit(2) == 1;
        return s;
    }

    uint32_t runs = 0;

  private:
    SteadyFile config_{board, kConfig};
    SteadyFile mru_{board, kMruFile};
};

// The whole product is 65,536 * 144 runs. Taken are: every MTU of the lowest and the highest 4096
// and every 7th between them (less under an emulator), each in one situation, scattered over the 144
// without regard to multiples of 16...
TEST_F(MtuModel, AgreesForMtusOfTheWholeRange)
{
    const uint32_t kStep = kLoopShare.wordStep > 1 ? 5 : 1;
    std::set<uint32_t> situations;
    for (uint32_t mtu = 0; mtu <= 0xFFFF && !HasFatalFailure();
         mtu += (mtu < 4096 || mtu >= 0xF000 ? 1 : 7) * kStep) {
        const uint32_t number = (mtu * 2654435761U >> 16) % kSituations;
        situations.insert(number);
        check(situation(mtu, number));
    }
    EXPECT_EQ(situations.size(), kSituations);
    EXPECT_GT(runs, 16000U / kStep);
}

// ...and every situation of the MTUs at which the computation changes, and of the 36 (two
// alignment steps and a bit) at 1500 and at the end.
TEST_F(MtuModel, AgreesForEverySituationOfTheMtusThatMatter)
{
    std::vector<uint32_t> mtus{0, 1, 25, 26, 27, 28, 576, 1212, 1213, 1214, 1215, 1390};
    for (uint32_t i = 0; i < 36; ++i) {
        mtus.push_back(1481 + i);
        mtus.push_back(0xFFFF - i);
    }
    for (const uint32_t mtu : mtus) {
        for (uint32_t number = 0; number < kSituations && !HasFatalFailure(); ++number) {
            check(situation(mtu, number));
        }
    }
    EXPECT_EQ(runs, 84U * 144U);
}

} // namespace
