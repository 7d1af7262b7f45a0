/* Sets the registers of blinky to their initial values. Made from the memory map. */
#include <stddef.h>
#include <stdint.h>

enum blinky_register {
    BLINKY_ID = 0x00, /* read only */
    BLINKY_CONTROL = 0x01, /* read and write */
    BLINKY_RATE = 0x02, /* read and write */
    BLINKY_SPREAD = 0x03, /* read and write */
    BLINKY_MASK = 0x04, /* read and write */
    BLINKY_PHASE = 0x05, /* read only */
    BLINKY_TABLE_INDEX = 0x06, /* read and write */
    BLINKY_TABLE_DATA = 0x07, /* write only */
};

struct blinky_setting {
    uint8_t offset;
    uint8_t value;
};

typedef void (*blinky_write)(void *bus, uint8_t offset, uint8_t value);

/* Calls "write" once per setting, in the order of the offsets; "bus" is handed through to it. */
void blinky_init(void *bus, blinky_write write);

static const struct blinky_setting settings[] = {
    {BLINKY_CONTROL, 0x01},
    {BLINKY_RATE, 0x04},
    {BLINKY_SPREAD, 0x20},
    {BLINKY_MASK, 0xff},
    {BLINKY_TABLE_INDEX, 0x00},
};

void blinky_init(void *bus, blinky_write write)
{
    for (size_t i = 0; i < sizeof settings / sizeof settings[0]; ++i)
        write(bus, settings[i].offset, settings[i].value);
}
