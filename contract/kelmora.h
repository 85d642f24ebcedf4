#pragma once

// Everything that a host needs.

#include "contract/calling.h"
#include "contract/effect_library.h"
#include "contract/frame_processor.h"
#include "contract/host_info.h"
#include "contract/interface_id.h"
#include "contract/memory_provider.h"
#include "contract/multi_lingual.h"
#include "contract/param.h"
#include "contract/param_tool_tip.h"
#include "contract/preset_data.h"
#include "contract/preset_saver.h"
#include "contract/render_info.h"
#include "contract/unknown.h"
#include "contract/video_effect.h"
#include "contract/video_frame.h"
#include "contract/video_host.h"
