#pragma once

// The whole public API of mplsfwd.
#include <mplsfwd/kor/Clock.h>
#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/kor/Entity.h>
#include <mplsfwd/kor/EnumRegistry.h>
#include <mplsfwd/kor/Ptr.h>
#include <mplsfwd/kor/TextForm.h>
