#ifndef TIMER_H
#define TIMER_H

#include <stdint.h>

struct timer {
    volatile uint32_t load;
    volatile uint32_t control;
};

void timer_start(struct timer *timer, uint32_t ticks);

#endif
