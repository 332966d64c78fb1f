# The fuzz targets: kor_fuzz_target(NAME libraries…) for NAME.cpp, which defines LLVMFuzzerTestOneInput;
# its corpus is corpus/NAME/. Each is built twice: with libFuzzer here, and as a replay of its corpus by
# tests/fuzz, which every test run does.

# The tests' fakes of a request, without the rest of what tests share: the fuzz build has no tests.
add_library(fake_request STATIC ${PROJECT_SOURCE_DIR}/tests/support/fake_asp.cpp
                                 ${PROJECT_SOURCE_DIR}/tests/support/fake_request.cpp)
kor_options(fake_request)
target_include_directories(fake_request PRIVATE ${PROJECT_SOURCE_DIR}/tests)
target_link_libraries(fake_request PRIVATE korlib)

kor_fuzz_target(base64_decode mirt_objects korlib)
kor_fuzz_target(html_encode mirt_objects korlib)
kor_fuzz_target(http_request zelto_objects korlib)
kor_fuzz_target(multipart_intake mirt_objects korlib fake_request)
kor_fuzz_target(multipart_parse mirt_objects korlib)
kor_fuzz_target(submit_decode mirt_objects korlib)
kor_fuzz_target(template_parse mirt_objects korlib)
kor_fuzz_target(url_decode mirt_objects korlib)
