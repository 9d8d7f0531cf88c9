#pragma once

// What every agent that embeds mplsfwd uses, whichever machines it runs: the runtime basics
// (counted references, the event loop with its clocks, tasks and timers, the log facility and its
// sink, toggles), the LFIB and MPLS status records the control plane publishes, the L3 status, and
// the hardware and FEC tables the machines and the platform exchange. See docs/embedding.md.

#include <mplsfwd/version.h>

#include <mplsfwd/kor/Clock.h>
#include <mplsfwd/kor/EntityManager.h>
#include <mplsfwd/kor/Ptr.h>
#include <mplsfwd/log/LogFacility.h>
#include <mplsfwd/log/LogSink.h>
#include <mplsfwd/log/NoopAgent.h>
#include <mplsfwd/log/ToggleService.h>
#include <mplsfwd/loom/AttrLogSm.h>
#include <mplsfwd/loom/EventLoop.h>
#include <mplsfwd/loom/TaskScheduler.h>
#include <mplsfwd/loom/TimerTask.h>
#include <mplsfwd/loom/TimerWheel.h>

#include <mplsfwd/l3/L3Status.h>
#include <mplsfwd/l3/MonitoredNexthopSm.h>
#include <mplsfwd/l3/Route6ReactorConfig.h>
#include <mplsfwd/l3/RouteReactorConfig.h>
#include <mplsfwd/l3/RouteResolver.h>
#include <mplsfwd/l3/RouteStatus.h>
#include <mplsfwd/mpls/DecapInfoTable.h>
#include <mplsfwd/mpls/HardwareStatus.h>
#include <mplsfwd/mpls/LfibDecapVias.h>
#include <mplsfwd/mpls/LfibDot1qTagToVlan.h>
#include <mplsfwd/mpls/LfibExtFecVia.h>
#include <mplsfwd/mpls/LfibHwStatus.h>
#include <mplsfwd/mpls/LfibMplsVia.h>
#include <mplsfwd/mpls/LfibRoute.h>
#include <mplsfwd/mpls/LfibStatus.h>
#include <mplsfwd/mpls/LfibTrackingStatus.h>
#include <mplsfwd/mpls/LfibViaSet.h>
#include <mplsfwd/mpls/MplsStatus.h>
#include <mplsfwd/mpls/PseudowireStatus.h>
#include <mplsfwd/mpls/RoutingInfo.h>

#include <mplsfwd/Fal/FecIdToHwFecIdRequest.h>
#include <mplsfwd/Fal/FecRecords.h>
#include <mplsfwd/Fal/MplsHwConfig.h>
#include <mplsfwd/Fal/MplsHwRoute.h>
#include <mplsfwd/Fal/MplsHwStatus.h>
#include <mplsfwd/Fal/UnprogrammedReason.h>
