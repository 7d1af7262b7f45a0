#include "platform/HXMLWElement.h"

HXMLWElement::~HXMLWElement() = default;
