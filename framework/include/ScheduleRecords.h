// Update-manager settings records: the automatic-download setting, the
// download and update schedules and the priority of one update module.
//
// Plain value classes. The values travel as they are; the service gives them
// their meaning. The two password fields are secrets: nothing in this suite
// traces them.
#ifndef QEL_SCHEDULERECORDS_H
#define QEL_SCHEDULERECORDS_H

#include <string>

class CVELMORA_DownloadSetting {
  public:
    int DownloadType = 0;
    std::string WebSiteUrl;
    std::string ProxyAddress;
    std::string ProxyPort;  // text, not a number
    std::string ProxyUser;
    std::string ProxyPassword;
    std::string CacheServerPath;
    std::string CacheServerUser;
    std::string CacheServerPassword;
    std::string TempDriveLetter;
    std::string ExternalMediaPath;
};

class CVELMORA_DownloadSchedule {
  public:
    bool IsAutoSetting = false;
    int RepeatType = 0;
    std::string DayOfWeek;
    std::string Date;
    std::string Time;
};

class CVELMORA_UpdateSchedule {
  public:
    bool IsAutoSetting = false;
    int RepeatType = 0;
    std::string DayOfWeek;
    std::string Date;
    std::string Time;
};

class CVelmora_PriorityUpdateParam {
  public:
    std::string AppKey;
    unsigned int UpdatePriority = 0;
    std::string VendorName;
    std::string DeviceID;
    std::string ModuleKind;
};

#endif  // QEL_SCHEDULERECORDS_H
