# Behind the project() of the sample: what most of its files include is read once. Our own builds show that every file
# includes what it needs.
cmake_language(DEFER CALL target_precompile_headers sample_provider PRIVATE
               <algorithm> <functional> <map> <memory> <optional> <string> <vector>)
