#pragma once

/// Everything of the hardware definition library, with the managers of messages and parameters.

#include "hwdef/bom/HHDFHwDefBomReader.h"
#include "hwdef/bom/HHDFHwDefBomWriter.h"
#include "hwdef/container/HHDFCTmpDirObject.h"
#include "hwdef/container/HHDFHwDefArchive.h"
#include "hwdef/inspect/HHDFDifference.h"
#include "hwdef/inspect/HHDFFinding.h"
#include "hwdef/inspect/HHDFInspect.h"
#include "hwdef/model/HHDFHwDef.h"
#include "hwdef/model/HHDFHwDefBoard.h"
#include "hwdef/model/HHDFHwDefConfig.h"
#include "hwdef/model/HHDFHwDefDriver.h"
#include "hwdef/model/HHDFHwDefFile.h"
#include "hwdef/model/HHDFHwDefFileTypes.h"
#include "hwdef/model/HHDFHwDefPartitionCell.h"
#include "hwdef/model/HHDFHwDefPartitionInfo.h"
#include "hwdef/swparam/SWParamReader.h"
#include "hwdef/swparam/SWParamWriter.h"
#include "hwdef/utils/HHDFHwDefUtils.h"
#include "platform/ComMsgMgr.h"
#include "platform/HPAParamMgr.h"
