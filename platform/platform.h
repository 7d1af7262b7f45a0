#pragma once

/// Everything of the runtime under the library.

#include "platform/ComMsgMgr.h"
#include "platform/HCRapidJsonReadWriteUtils.h"
#include "platform/HEXAll.h"
#include "platform/HPAParamMgr.h"
#include "platform/HSTStringUtils.h"
#include "platform/HUTCoreContainer.h"
#include "platform/HUTEnv.h"
#include "platform/HUTFile.h"
#include "platform/HUTFileUtils.h"
#include "platform/HUTFileWriteStream.h"
#include "platform/HUTPathUtils.h"
#include "platform/HUTZip.h"
#include "platform/HXMLWElement.h"
#include "platform/HXMLWInterface.h"
#include "platform/HXMLWriterBase.h"
#include "platform/JsonWriter.h"
#include "platform/Limits.h"
#include "platform/Progress.h"
#include "platform/iostreams/zip.h"
