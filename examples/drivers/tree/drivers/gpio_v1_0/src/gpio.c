#include "gpio.h"

void gpio_set(struct gpio *port, unsigned pin, int level)
{
    uint32_t mask = (uint32_t)1 << pin;

    port->out = level ? (port->out | mask) : (port->out & ~mask);
}
