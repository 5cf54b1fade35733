Types that leave their line open share it with the next record.

  $ printf '%s\n' '{"type":"JOB_VACATED","eventTime":5}' '{"type":"SBD_JOB_STATUS","eventTime":6}' \
  >   '{"type":"LOG_SWITCH","eventTime":7}' '{"type":"JOB_OCCUPY_REQ","eventTime":8}' | wmq encode > joined
  $ cat joined
  "JOB_VACATED" "10.1" 5"SBD_JOB_STATUS" "10.1" 6 0 0 0 0 0 0 0 0 0 0 0 0 0 0"LOG_SWITCH" "10.1" 7 0 
  "JOB_OCCUPY_REQ" "10.1" 8 (no line end)
  $ wmq decode joined | jq -c '[.type, .eventTime]'
  ["JOB_VACATED",5]
  ["SBD_JOB_STATUS",6]
  ["LOG_SWITCH",7]
  ["JOB_OCCUPY_REQ",8]
  $ wmq decode --split-joined --type LOG_SWITCH joined | jq -c '.eventTime'
  7
  $ wmq decode --no-split-joined joined | jq -c '[.type, .eventTime]'
  ["JOB_VACATED",5]
  ["JOB_OCCUPY_REQ",8]

Text that looks like a record stays text.

  $ echo '{"type":"GRP_CTRL","eventTime":5,"eventLog":{"grpCtrlStr":"\"LOG_SWITCH\" \"10.1\" 7 0","grpName":"g"}}' |
  >   wmq encode | wmq decode | jq -c '[.type, .eventLog.grpCtrlStr]'
  ["GRP_CTRL","\"LOG_SWITCH\" \"10.1\" 7 0"]
