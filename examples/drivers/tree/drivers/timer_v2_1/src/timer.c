#include "timer.h"

void timer_start(struct timer *timer, uint32_t ticks)
{
    timer->load = ticks;
    timer->control = 1;
}
