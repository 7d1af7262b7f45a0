#include "platform/HEXAll.h"

HEXAll::~HEXAll() = default;
