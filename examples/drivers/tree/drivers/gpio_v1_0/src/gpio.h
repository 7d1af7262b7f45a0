#ifndef GPIO_H
#define GPIO_H

#include <stdint.h>

struct gpio {
    volatile uint32_t out;
    volatile uint32_t in;
};

void gpio_set(struct gpio *port, unsigned pin, int level);

#endif
