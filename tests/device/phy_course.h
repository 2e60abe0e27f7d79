// What the commands on a port's PHY ask of the driver.
#pragma once

#include "device/device_test.h"

constexpr uint32_t kPhyPorts[] = {0, 1, 2, 3, 4, 5, 6};

constexpr uint16_t kPhyAddressOfPort[7] = {9, 1, 2, 3, 4, 5, 8};

inline uint32_t phy_read_request(uint32_t port)
{
    return port == 0 ? 0x6B98 : 0x6B87;
}

inline uint32_t phy_write_request(uint32_t port)
{
    return port == 0 ? 0x6B99 : 0x6B88;
}

inline Step phy_register_read(uint32_t port, uint32_t number)
{
    return record_read(phy_read_request(port),
                       le16(kPhyAddressOfPort[port]) + le16(number) + le16(0) + le16(0));
}

inline Step phy_register_write(uint32_t port, uint32_t number, uint32_t value)
{
    return record_write(phy_write_request(port),
                        le16(kPhyAddressOfPort[port]) + le16(number) + le16(value) + le16(0));
}

// All 32 registers on a descriptor of their own, and what the command makes of a failure there.
inline Course phy_reading(uint32_t port, int32_t open_failed = DEVICE_OPEN_FAILED,
                          int32_t read_failed = DEVICE_READ_FAILED)
{
    Course course{opens_to_write(open_failed)};
    for (uint32_t number = 0; number < 32; ++number) {
        course.push_back(phy_register_read(port, number));
        course.back().failure = read_failed;
    }
    course.push_back(closes());
    return course;
}

// A reading that ends undecided: the second pass meets the closed descriptor.
inline Course phy_reading_undecided(uint32_t port)
{
    Course course = phy_reading(port);
    Step refused = phy_register_read(port, 0);
    refused.call.insert(strlen("ioctl "), "(closed) ");
    course.push_back(refused);
    return course;
}

inline const Course kRetryDelay{{"usleep 1", kIgnored}};
