#pragma once

#include "accounts/dav/xml.h"

// The elements that requests and answers are made of.
namespace orlocal::accounts::dav {

// RFC 4918, 14 and 15.
constexpr XmlName kMultistatus{XmlSpace::kDav, "multistatus"};
constexpr XmlName kResponse{XmlSpace::kDav, "response"};
constexpr XmlName kHref{XmlSpace::kDav, "href"};
constexpr XmlName kStatus{XmlSpace::kDav, "status"};
constexpr XmlName kPropStat{XmlSpace::kDav, "propstat"};
constexpr XmlName kProp{XmlSpace::kDav, "prop"};
constexpr XmlName kError{XmlSpace::kDav, "error"};
constexpr XmlName kPropFind{XmlSpace::kDav, "propfind"};
constexpr XmlName kPropertyUpdate{XmlSpace::kDav, "propertyupdate"};
constexpr XmlName kSet{XmlSpace::kDav, "set"};
constexpr XmlName kDisplayName{XmlSpace::kDav, "displayname"};
constexpr XmlName kGetEtag{XmlSpace::kDav, "getetag"};
constexpr XmlName kResourceType{XmlSpace::kDav, "resourcetype"};
constexpr XmlName kCollection{XmlSpace::kDav, "collection"};

// RFC 3744, 5397, 6578.
constexpr XmlName kPrincipal{XmlSpace::kDav, "principal"};
constexpr XmlName kCurrentUserPrincipal{XmlSpace::kDav, "current-user-principal"};
constexpr XmlName kCurrentUserPrivilegeSet{XmlSpace::kDav, "current-user-privilege-set"};
constexpr XmlName kPrivilege{XmlSpace::kDav, "privilege"};
constexpr XmlName kUnauthenticated{XmlSpace::kDav, "unauthenticated"};
constexpr XmlName kSupportedReportSet{XmlSpace::kDav, "supported-report-set"};
constexpr XmlName kSupportedReport{XmlSpace::kDav, "supported-report"};
constexpr XmlName kReport{XmlSpace::kDav, "report"};
constexpr XmlName kSyncCollection{XmlSpace::kDav, "sync-collection"};
constexpr XmlName kSyncToken{XmlSpace::kDav, "sync-token"};
constexpr XmlName kSyncLevel{XmlSpace::kDav, "sync-level"};

// RFC 4791, 6638.
constexpr XmlName kCalendar{XmlSpace::kCalDav, "calendar"};
constexpr XmlName kCalendarHomeSet{XmlSpace::kCalDav, "calendar-home-set"};
constexpr XmlName kCalendarDescription{XmlSpace::kCalDav, "calendar-description"};
constexpr XmlName kSupportedComponents{XmlSpace::kCalDav, "supported-calendar-component-set"};
constexpr XmlName kComp{XmlSpace::kCalDav, "comp"};
constexpr XmlName kMaxResourceSize{XmlSpace::kCalDav, "max-resource-size"};
constexpr XmlName kCalendarMultiget{XmlSpace::kCalDav, "calendar-multiget"};
constexpr XmlName kCalendarData{XmlSpace::kCalDav, "calendar-data"};
constexpr XmlName kMkCalendar{XmlSpace::kCalDav, "mkcalendar"};

// What no RFC has and every server knows.
constexpr XmlName kGetCtag{XmlSpace::kCalendarServer, "getctag"};
constexpr XmlName kCalendarColor{XmlSpace::kApple, "calendar-color"};
constexpr XmlName kCalendarOrder{XmlSpace::kApple, "calendar-order"};

}  // namespace orlocal::accounts::dav
