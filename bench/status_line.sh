#!/bin/bash
# The status line as people write it with bash and jq, for comparison.
read -r weekly five_hour < <(
    jq -r '.rate_limits | [.seven_day, .five_hour] | map(100 - .used_percentage | floor) | @tsv'
)
printf '주간 %d%% 남음 · 5시간 %d%% 남음\n' "$weekly" "$five_hour"
